#pragma once

#include <cmath>

namespace vanta {

/// Two floats count as equal within this distance: 2 to the power -23.
inline constexpr float kEqualWithin = 1.1920929e-7f;

/// The floor of every level in dB, which an amplitude of at most kSilence reads as.
inline constexpr float kSilenceDb = -180.0f;
inline constexpr float kSilence = 1e-10f;

/// ln(10) / 20: dB to natural logarithm of the amplitude.
inline constexpr double kDbToLog = 0.1151292546497023;

inline bool nearlyEqual(float a, float b) {
    return std::abs(a - b) <= kEqualWithin;
}

/// Amplitude factor of a gain in dB.
inline double gainFromDb(double db) {
    return std::exp(db * kDbToLog);
}

/// Level in dB of an amplitude, never below kSilenceDb.
inline double dbFromGain(double gain) {
    const double magnitude = std::abs(gain);
    return magnitude > 1e-10 ? std::fmax(20.0 * std::log10(magnitude), -180.0) : -180.0;
}

/// Whole samples in a length of time, truncated from the double-precision product. Every length of the
/// signal path is counted here, so that delays that must cancel agree to the sample.
inline int samplesInSeconds(double seconds, double sampleRate) {
    return static_cast<int>(seconds * sampleRate);
}
inline int samplesInMs(double ms, double sampleRate) {
    return samplesInSeconds(ms * 0.001, sampleRate);
}

}  // namespace vanta
