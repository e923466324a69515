#pragma once

#include <cstdint>

namespace vanta::gui {

/// The product of two bytes as fractions of 255, rounded.
constexpr std::uint8_t multiplyBytes(int a, int b) {
    const int t = a * b + 128;
    return static_cast<std::uint8_t>((t + (t >> 8)) >> 8);
}

/// Not premultiplied; alpha 255 is opaque.
struct Color {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    std::uint8_t alpha = 0;

    /// From a constant 0xAABBGGRR.
    static constexpr Color of(std::uint32_t abgr) {
        return {static_cast<std::uint8_t>(abgr), static_cast<std::uint8_t>(abgr >> 8),
                static_cast<std::uint8_t>(abgr >> 16), static_cast<std::uint8_t>(abgr >> 24)};
    }
    constexpr Color withAlpha(int scaledBy) const {
        return {red, green, blue, multiplyBytes(alpha, scaledBy)};
    }
    bool operator==(const Color&) const = default;
};

}  // namespace vanta::gui
