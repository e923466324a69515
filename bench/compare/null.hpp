#pragma once

#include <filesystem>

namespace vanta::bench {

/// By how much two renders may differ, in dB of full scale.
inline constexpr double kPeakBoundDb = -115.0;
inline constexpr double kRmsBoundDb = -130.0;

/// Compares the files of one name in two folders and prints a row of a Markdown table for each, with the peak
/// and the RMS of their difference. In a third folder, if there is one, are renders by the old program of an
/// input that differs in its last bits; how far those are from the old ones shows how much of a difference is
/// rounding, grown. Returns whether all keep to the bounds. Throws std::runtime_error if files do not go
/// together.
bool printDifferences(const std::filesystem::path& before, const std::filesystem::path& after,
                      const std::filesystem::path& rounded);
/// Writes the music of the comparison at 44.1 kHz, in 32-bit float: song.wav and bursts.wav, and the same
/// with the last bit of every sample turned, into the folders "plain" and "rounded" below `folder`.
void writeMusic(const std::filesystem::path& folder, double seconds);

}  // namespace vanta::bench
