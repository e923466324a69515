#include "limiter/latency/parameter_delays.hpp"

#include "limiter/latency/style_stages.hpp"

namespace vanta {

SignalPathDelays delaysOf(const VantaParameters& parameters, double baseRate) {
    return {baseRate, 1 << parameters.oversampling.currentIndex(), parameters.truePeakLimiting.mapped(),
            styleStages(parameters.style.mapped())};
}

bool changesDelays(const VantaParameters& parameters, int index) {
    return index == GenericPluginBase::kAllParameters || index == parameters.oversampling.index() ||
           index == parameters.truePeakLimiting.index() || index == parameters.style.index();
}

}  // namespace vanta
