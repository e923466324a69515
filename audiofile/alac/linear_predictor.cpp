#include "audiofile/alac/linear_predictor.hpp"

#include <algorithm>

namespace vanta {

namespace {

/// Decoders compute in 32 bits that wrap around.
std::int32_t wrapped(std::uint32_t value) {
    return static_cast<std::int32_t>(value);
}
std::uint32_t plain(std::int32_t value) {
    return static_cast<std::uint32_t>(value);
}
std::int32_t difference(std::int32_t a, std::int32_t b) {
    return wrapped(plain(a) - plain(b));
}
int signOf(std::int32_t value) {
    return (value > 0) - (value < 0);
}

std::int32_t extended(std::int32_t value, int bits) {
    const int unused = 32 - bits;
    return wrapped(plain(value) << unused) >> unused;
}

}  // namespace

LinearPredictor::LinearPredictor() {
    constexpr int kOne = 1 << kShift;
    coefficients_[0] = 38 * kOne / 16;
    coefficients_[1] = -29 * kOne / 16;
    coefficients_[2] = -2 * kOne / 16;
}

void LinearPredictor::run(std::span<const std::int32_t> samples, std::span<std::int32_t> differences,
                          int bits) {
    const std::size_t first = std::min<std::size_t>(samples.size(), kOrder + 1);
    for (std::size_t i = 0; i < first; ++i)
        differences[i] = i == 0 ? samples[0] : extended(difference(samples[i], samples[i - 1]), bits);
    for (std::size_t i = first; i < samples.size(); ++i) {
        const std::int32_t* const last = samples.data() + i - 1;
        const std::int32_t oldest = last[-kOrder];
        std::uint32_t sum = 1U << (kShift - 1);
        for (int k = 0; k < kOrder; ++k)
            sum += plain(coefficients_[static_cast<std::size_t>(k)]) * plain(difference(last[-k], oldest));
        const std::int32_t predicted = wrapped(plain(oldest) + plain(wrapped(sum) >> kShift));
        differences[i] = extended(difference(samples[i], predicted), bits);
        adapt(last, oldest, differences[i]);
    }
}

void LinearPredictor::adapt(const std::int32_t* last, std::int32_t oldest, std::int32_t rest) {
    const int sign = signOf(rest);
    for (int k = kOrder - 1; k >= 0 && rest * sign > 0; --k) {
        const std::int32_t step = difference(oldest, last[-k]);
        const int stepSign = signOf(step);
        auto& coefficient = coefficients_[static_cast<std::size_t>(k)];
        coefficient = static_cast<std::int16_t>(coefficient - sign * stepSign);
        rest = difference(rest, wrapped(plain(kOrder - k) * plain((sign * stepSign * step) >> kShift)));
    }
}

}  // namespace vanta
