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

/// A pixel with each byte in 16 bits of its own, so that all four are multiplied as one.
constexpr std::uint64_t spreadPixel(Pixel pixel) {
    return static_cast<std::uint64_t>(pixel & 0x00FF00FFu) | static_cast<std::uint64_t>(pixel & 0xFF00FF00u)
                                                                 << 24;
}

/// From `from` at weight 0 to `to` at 256, all four bytes of two spread pixels.
constexpr Pixel mixSpreadPixels(std::uint64_t from, std::uint64_t to, unsigned weight) {
    // What the difference borrows from its neighbours the sum gives back.
    const std::uint64_t sum = (from << 8) + (to - from) * weight + 0x0080008000800080u;
    const std::uint64_t mixed = sum >> 8 & 0x00FF00FF00FF00FFu;
    return static_cast<Pixel>(mixed & 0x00FF00FFu) | static_cast<Pixel>(mixed >> 24 & 0xFF00FF00u);
}

/// From `from` at weight 0 to `to` at 256, all four bytes.
constexpr Pixel mixPixels(Pixel from, Pixel to, unsigned weight) {
    return mixSpreadPixels(spreadPixel(from), spreadPixel(to), weight);
}

}  // namespace vanta::gui
