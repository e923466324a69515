#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace vanta {

/// Predicts each sample from those before it and leaves the difference. Coefficients move by one step towards
/// whatever would have predicted better; a decoder does the same from the same start.
class LinearPredictor {
public:
    static constexpr int kOrder = 8;
    static constexpr int kShift = 9;  ///< coefficients are in units of 2^-9

    LinearPredictor();

    /// What the next block starts with.
    const std::array<std::int16_t, kOrder>& coefficients() const { return coefficients_; }
    /// `bits`: word length of the samples. Both spans have one length.
    void run(std::span<const std::int32_t> samples, std::span<std::int32_t> differences, int bits);

private:
    void adapt(const std::int32_t* last, std::int32_t oldest, std::int32_t difference);

    std::array<std::int16_t, kOrder> coefficients_{};
};

}  // namespace vanta
