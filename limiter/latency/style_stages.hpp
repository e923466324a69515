#pragma once

#include "limiter/latency/signal_path_delays.hpp"
#include "limiter/styles/style_names.hpp"
#include "limiter/styles/style_values.hpp"

namespace vanta {

/// What a style puts into the path of its gain, from its record: known before the engine has taken the style
/// up, and without an engine. Any thread; the first call of the process reads all records and allocates.
StageCounts styleStages(LimitingStyle style);
/// The same of any style's values.
StageCounts stagesOf(StyleValues values);

}  // namespace vanta
