#include "limiter/latency/parameter_delays.hpp"

#include "limiter/latency/style_stages.hpp"

namespace vanta {

SignalPathDelays delaysOf(const VantaParameters& parameters, double baseRate) {
    return delaysOf(parameters, baseRate, styleStages(parameters.style.mapped()));
}

SignalPathDelays delaysOf(const VantaParameters& parameters, double baseRate, const StageCounts& stages) {
    return {baseRate, 1 << parameters.oversampling.currentIndex(), parameters.truePeakLimiting.mapped(),
            stages};
}

bool changesDelays(const VantaParameters& parameters, int index) {
    return index == GenericPluginBase::kAllParameters || index == parameters.oversampling.index() ||
           index == parameters.truePeakLimiting.index() || index == parameters.style.index();
}

}  // namespace vanta
