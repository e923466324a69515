#include "tools/song/rate_converter.hpp"

#include <algorithm>
#include <cmath>

#include "tools/song/windowed_sinc.hpp"

namespace vanta::song {
namespace {

// Between two rows the kernel is taken as straight, which is off by (pi / kPhases)^2 / 8: -106 dB.
constexpr std::size_t kPhases = 512;
constexpr double kCrossings = 64;
constexpr double kBeta = 10;
/// The transition band of this window is 0.05 wide; it ends at the lower Nyquist frequency.
constexpr double kCutoff = 0.475;

}  // namespace

RateConverter::RateConverter(double fromHz, double toHz) : ratio_(fromHz / toHz) {
    const double widening = std::fmax(1, ratio_);
    const double halfWidth = kCrossings * widening;
    reach_ = static_cast<std::ptrdiff_t>(std::ceil(halfWidth));
    taps_ = static_cast<std::size_t>(2 * reach_);
    rows_.resize((kPhases + 1) * taps_);
    for (std::size_t row = 0; row <= kPhases; ++row) {
        const double fraction = static_cast<double>(row) / kPhases;
        for (std::size_t tap = 0; tap < taps_; ++tap) {
            const double x = static_cast<double>(tap) - static_cast<double>(reach_) + 1 - fraction;
            rows_[row * taps_ + tap] = windowedSinc(x, kCutoff / widening, halfWidth, kBeta);
        }
    }
}

std::vector<float> RateConverter::convert(std::span<const double> in, std::size_t count) const {
    std::vector<float> out(count);
    if (ratio_ == 1) {
        std::transform(in.begin(), in.begin() + static_cast<std::ptrdiff_t>(std::min(count, in.size())),
                       out.begin(), [](double x) { return static_cast<float>(x); });
        return out;
    }
    for (std::size_t i = 0; i < count; ++i) {
        const double position = static_cast<double>(i) * ratio_;
        const double whole = std::floor(position);
        const double phase = (position - whole) * kPhases;
        const double row = std::floor(phase);
        const double mix = phase - row;
        const auto first = static_cast<std::ptrdiff_t>(whole) - reach_ + 1;
        double sum = dot(in, first, static_cast<std::size_t>(row));
        if (mix > 0) sum += mix * (dot(in, first, static_cast<std::size_t>(row) + 1) - sum);
        out[i] = static_cast<float>(sum);
    }
    return out;
}

double RateConverter::dot(std::span<const double> in, std::ptrdiff_t first, std::size_t row) const {
    const double* kernel = rows_.data() + row * taps_;
    const std::ptrdiff_t from = std::max<std::ptrdiff_t>(0, -first);
    const std::ptrdiff_t to =
        std::min(static_cast<std::ptrdiff_t>(taps_), static_cast<std::ptrdiff_t>(in.size()) - first);
    // Four sums let the compiler keep several products in flight.
    double sums[4] = {};
    std::ptrdiff_t tap = from;
    for (; tap + 4 <= to; tap += 4)
        for (std::ptrdiff_t k = 0; k < 4; ++k)
            sums[k] += kernel[tap + k] * in[static_cast<std::size_t>(first + tap + k)];
    for (; tap < to; ++tap) sums[0] += kernel[tap] * in[static_cast<std::size_t>(first + tap)];
    return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

}  // namespace vanta::song
