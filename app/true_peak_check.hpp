#pragma once

#include <filesystem>

namespace vanta {

/// By how much further Output Level goes down than was missing, in dB, so that one more render is enough.
inline constexpr double kTruePeakReserveDb = 0.005;

/// The highest true peak of all channels of an audio file, in dBTP, by an interpolator that is longer than
/// the limiter's own; -180 for silence. Failure if the file cannot be read to its end, Interrupted if the
/// user asked to stop.
double judgeTruePeak(const std::filesystem::path& file);

}  // namespace vanta
