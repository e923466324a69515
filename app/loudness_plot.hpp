#pragma once

#include <filesystem>
#include <span>

#include "app/measurement.hpp"

namespace vanta {

/// Draws loudness over time, true peaks and the target as a PNG, a panel a file. Failure if it cannot be
/// written.
void writeLoudnessPlot(const std::filesystem::path& file, std::span<const Measurement> measurements,
                       const Requirements& requirements);

}  // namespace vanta
