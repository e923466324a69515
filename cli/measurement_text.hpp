#pragma once

#include <span>
#include <string>

#include "measure/measurement.hpp"
#include "measure/requirements.hpp"

namespace vanta {

/// The table that `vanta measure` prints: a row for each file, one for all of them together, details of a
/// single file, and what misses the requirements marked with "!" and explained below.
std::string measurementTable(std::span<const Measurement> measurements, const Requirements& requirements);

}  // namespace vanta
