#pragma once

#include <vector>

#include "limiter/styles/dynamics_engine_configuration.hpp"
#include "limiter/styles/target_range.hpp"

namespace vanta {

/// The ranges of all targets by RangeId; source types are ElementKinds. The configuration's limits are the
/// maxima of the lengths of time.
std::vector<TargetRange> engineRanges(const DynamicsEngineConfiguration& configuration);

}  // namespace vanta
