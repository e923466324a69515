#pragma once

#include <cmath>

namespace vanta::interface {

/// The level of nothing, dB.
inline constexpr float kSilence = -180.0f;

inline bool isSilence(float level) {
    return !(level > -179.9f);
}

/// A reading that has not moved repaints nothing.
inline bool isSameReading(float a, float b) {
    return !(std::abs(a - b) > 1.1920929e-07f);
}

}  // namespace vanta::interface
