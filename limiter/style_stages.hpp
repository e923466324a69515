#pragma once

#include "limiter/signal_path_delays.hpp"
#include "limiter/vanta_parameters.hpp"

namespace vanta {

/// What a style puts into the path of its gain, from its record: known without an engine. Any thread.
StageCounts styleStages(VantaParameters::LimitingStyle style);

}  // namespace vanta
