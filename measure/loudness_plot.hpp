#pragma once

#include <filesystem>
#include <span>

#include "measure/measurement.hpp"
#include "measure/requirements.hpp"

namespace vanta {

/// Draws loudness over time, true peaks and the target as a PNG, one panel for each file that could be
/// measured. Failure if it cannot be written.
void writeLoudnessPlot(const std::filesystem::path& file, std::span<const Measurement> measurements,
                       const Requirements& requirements);

}  // namespace vanta
