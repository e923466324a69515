#pragma once

#include <cstdint>

#include "gui/graphics/color.hpp"

namespace vanta::gui {

/// Four bytes, in memory blue, green, red and 255 less the opacity; the colours are premultiplied by the
/// opacity. Zero is opaque black.
using Pixel = std::uint32_t;

inline constexpr Pixel kTransparentPixel = 0xFF000000u;

constexpr Pixel pixelOf(int red, int green, int blue, int opacity) {
    return static_cast<Pixel>(blue) | static_cast<Pixel>(green) << 8 | static_cast<Pixel>(red) << 16 |
           static_cast<Pixel>(255 - opacity) << 24;
}

constexpr int opacityOf(Pixel pixel) {
    return 255 - static_cast<int>(pixel >> 24);
}

constexpr Pixel toPixel(Color color) {
    return pixelOf(multiplyBytes(color.red, color.alpha), multiplyBytes(color.green, color.alpha),
                   multiplyBytes(color.blue, color.alpha), color.alpha);
}

constexpr Color toColor(Pixel pixel) {
    const int opacity = opacityOf(pixel);
    const auto channel = [&](int shift) {
        const int value = static_cast<int>(pixel >> shift & 255u);
        if (opacity == 0 || opacity == 255) return static_cast<std::uint8_t>(value);
        const int whole = value * 255 / opacity;
        return static_cast<std::uint8_t>(whole < 255 ? whole : 255);
    };
    return {channel(16), channel(8), channel(0), static_cast<std::uint8_t>(opacity)};
}

/// From `from` at weight 0 to `to` at 256, all four bytes.
constexpr Pixel mixPixels(Pixel from, Pixel to, unsigned weight) {
    // Each byte in 16 bits of its own: a product with 256 fits, and four are done as one.
    const auto spread = [](Pixel p) {
        return static_cast<std::uint64_t>(p & 0x00FF00FFu) | static_cast<std::uint64_t>(p & 0xFF00FF00u)
                                                                 << 24;
    };
    const std::uint64_t sum = spread(from) * (256 - weight) + spread(to) * weight + 0x0080008000800080u;
    const std::uint64_t mixed = sum >> 8 & 0x00FF00FF00FF00FFu;
    return static_cast<Pixel>(mixed & 0x00FF00FFu) | static_cast<Pixel>(mixed >> 24 & 0xFF00FF00u);
}

}  // namespace vanta::gui
