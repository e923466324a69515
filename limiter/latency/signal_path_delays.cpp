#include "limiter/latency/signal_path_delays.hpp"

#include <algorithm>

#include "dsp/sr/converter_style.hpp"
#include "dsp/sr/half_band_design.hpp"
#include "foundation/numbers.hpp"
#include "limiter/clippers/overshoot_limiter.hpp"
#include "limiter/clippers/smart_clipper.hpp"

namespace vanta {

namespace {

/// The delay of one look-ahead stage is the longest look-ahead that a channel is built for.
constexpr double kLookAheadSeconds = double{limiterConfiguration().lookAheadLimit} / 1000.0;

int exposerDelay(double rate) {
    return sr::filterLatency(sr::truePeakFactor(rate), rate, kExposerAttenuationDb, kPassbandHz) / 2;
}

int converterLatency(double baseRate, int oversampling) {
    return sr::filterLatency(oversampling, baseRate, kConverterAttenuationDb, kPassbandHz);
}

int overshootDelay(double baseRate, bool truePeak) {
    return OvershootLimiter::delaySamples(baseRate) + (truePeak ? exposerDelay(baseRate) : 0);
}

}  // namespace

int stageDelay(double rate, const StageCounts& stages) {
    return samplesInSeconds(SmartClipper::kWindowSeconds, rate) * stages.outputSmartClippers +
           samplesInSeconds(kLookAheadSeconds, rate) * stages.lookAheadStages +
           kConvolverSamples * stages.outputConvolvers;
}

SignalPathDelays::SignalPathDelays(double baseRate, int oversampling, bool truePeakLimiting,
                                   const StageCounts& stages) {
    const double rate = baseRate * oversampling;
    engine = stageDelay(rate, stages);
    truePeak = truePeakLimiting ? exposerDelay(rate) : 0;
    const int engineLatency = engine + truePeak;
    const int whole = (engineLatency + oversampling - 1) / oversampling;
    pad = whole * oversampling - engineLatency;
    converters = converterLatency(baseRate, oversampling);
    const bool smooth = truePeakLimiting || oversampling >= 2;
    overshoot = smooth ? overshootDelay(baseRate, truePeakLimiting) : 0;
    detection = converters / 2 + (truePeakLimiting ? exposerDelay(baseRate) : 0);
    meter = overshoot + converters / 2;
    total = converters + overshoot + whole;
}

StageCounts mostStages(const DynamicsEngineConfiguration& configuration) {
    return {configuration.built[indexOf(ElementKind::Vca)],
            configuration.built[indexOf(ElementKind::Convolver)], configuration.maxOutputSmartClippers};
}

SignalPathLimits::SignalPathLimits(double baseRate, int oversampling, const StageCounts& most) {
    const double rate = baseRate * oversampling;
    engine = stageDelay(rate, most);
    truePeak = exposerDelay(rate);
    overshoot = overshootDelay(baseRate, true);
    meter = overshoot + converterLatency(baseRate, oversampling) / 2;
}

int largestLatency(double baseRate, const StageCounts& most) {
    int largest = 0;
    for (int factor = 1; factor <= sr::ConverterStyle::kMaxFactor; factor *= 2) {
        largest = std::max(largest, SignalPathDelays(baseRate, factor, true, most).total);
    }
    return largest;
}

}  // namespace vanta
