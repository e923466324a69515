#pragma once

#include <cmath>

/// Levels of ITU-R BS.1770-4.
namespace vanta {

inline constexpr float kLoudnessOffset = -0.691f;
inline constexpr float kNoLoudness = -180.0f;

/// LUFS of a weighted mean square.
inline float loudnessOf(double meanSquare) {
    return meanSquare > 1e-10 ? static_cast<float>(10.0 * std::log10(meanSquare)) + kLoudnessOffset
                              : kNoLoudness;
}
/// And back.
inline double meanSquareOf(double loudness) {
    return std::pow(10.0, (loudness - kLoudnessOffset) * 0.1);
}

/// Rounded to that many decimals, halves away from zero; not rounded if `decimals` is negative.
inline float roundedLoudness(float loudness, int decimals) {
    if (decimals < 0 || loudness <= kNoLoudness) return loudness;
    const float scale = std::pow(10.0f, static_cast<float>(decimals));
    return std::round(loudness * scale) / scale;
}

}  // namespace vanta
