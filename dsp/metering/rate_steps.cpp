#include "dsp/metering/rate_steps.hpp"

#include <algorithm>
#include <limits>
#include <numbers>

#include "kernel/fir_kernels.hpp"

namespace vanta {
namespace {

/// The modified Bessel function of the first kind and order 0, by its power series (Abramowitz and Stegun,
/// 9.6.12). The standard library's asks lgamma, which writes a variable of the whole process on any thread.
double besselI0(double x) {
    double term = 1.0;
    double sum = 1.0;
    for (double k = 1.0; term > std::numeric_limits<double>::epsilon() * sum; ++k) {
        term *= x * x / (4.0 * k * k);
        sum += term;
    }
    return sum;
}

}  // namespace

double kaiserWindow(double place) {
    constexpr double kBeta = 7.86;
    if (std::abs(place) >= 1.0) return 0.0;
    return besselI0(kBeta * std::sqrt(1.0 - place * place)) / besselI0(kBeta);
}

RecentSamples::RecentSamples(std::size_t kept) : kept_(kept), end_(kept), samples_(2 * kept + 4096) {}

// What is kept moves to the front once a buffer's length, and not with every block.
float* RecentSamples::append(std::size_t count) {
    if (end_ + count > samples_.size()) {
        std::copy_n(samples_.data() + end_ - kept_, kept_, samples_.data());
        end_ = kept_;
    }
    end_ += count;
    return samples_.data() + end_ - count;
}

const HalfBand& HalfBand::get() {
    static const HalfBand filter = [] {
        HalfBand made{};
        constexpr auto kCentre = static_cast<double>(2 * kReach);
        for (std::size_t i = 0; i < kTaps; ++i) {
            const double distance = static_cast<double>(i) - kCentre;
            const double angle = std::numbers::pi * distance / 2.0;
            const double sinc = distance == 0.0 ? 1.0 : std::sin(angle) / angle;
            // Every second tap is zero, not what rounding leaves of it.
            const bool isZero = distance != 0.0 && i % 2 == 0;
            made.taps[i] =
                isZero ? 0.0f : static_cast<float>(0.5 * sinc * kaiserWindow(distance / (kCentre + 1.0)));
        }
        for (std::size_t i = 0; i < kBranch; ++i) made.branch[i] = 2.0f * made.taps[2 * i + 1];
        return made;
    }();
    return filter;
}

void StepDown::process(std::span<const float> in, float* out) {
    std::copy(in.begin(), in.end(), recent_.append(in.size()));
    std::array<float, kernel::decimatorScratch(HalfBand::kTaps)> scratch;
    const float* window = recent_.before(in.size() - 1 + HalfBand::kTaps - 1);
    kernel::decimateHalfBand(window, HalfBand::get().taps.data(), HalfBand::kTaps, scratch.data(), out,
                             in.size() / 2);
}

void StepUp::process(std::span<const float> in, float* out) {
    std::copy(in.begin(), in.end(), recent_.append(in.size()));
    const float* window = recent_.before(in.size() - 1 + HalfBand::kBranch - 1);
    kernel::interpolateHalfBand(window, HalfBand::get().branch.data(), HalfBand::kBranch, out, in.size());
}

}  // namespace vanta
