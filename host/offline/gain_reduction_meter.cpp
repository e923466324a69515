#include "host/offline/gain_reduction_meter.hpp"

#include <algorithm>

namespace vanta {

GainReductionMeter::GainReductionMeter(wave::Producer& gain)
    : Filter(gain.environment(), wave::OwnBlock::No) {
    source = &gain;
    setScheduled(wave::Environment::kBackGroup);
}

void GainReductionMeter::start(std::int64_t samples) {
    toSkip = samples;
    smallest = 1.0f;
}

void GainReductionMeter::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>*, int samples,
                                 int) {
    const auto first = static_cast<int>(std::min<std::int64_t>(toSkip, samples));
    toSkip -= first;
    for (int i = first; i < samples; ++i) smallest = std::min(smallest, in.data()[i]);
    publishInput();
}

}  // namespace vanta
