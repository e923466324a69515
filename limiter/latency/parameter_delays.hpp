#pragma once

#include "limiter/latency/signal_path_delays.hpp"
#include "limiter/parameters/vanta_parameters.hpp"

namespace vanta {

/// The delays that the parameters ask for at a base rate in Hz: what the model and the processor each tell
/// their side as latency. Any thread.
SignalPathDelays delaysOf(const VantaParameters& parameters, double baseRate);
/// With the stages of another style than the one that they select.
SignalPathDelays delaysOf(const VantaParameters& parameters, double baseRate, const StageCounts& stages);

/// Whether a change of the parameter at this index, or of GenericPluginBase::kAllParameters, changes them.
bool changesDelays(const VantaParameters& parameters, int index);

}  // namespace vanta
