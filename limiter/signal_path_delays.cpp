#include "limiter/signal_path_delays.hpp"

#include "dsp/sr/half_band_design.hpp"
#include "foundation/numbers.hpp"
#include "limiter/overshoot_limiter.hpp"

namespace vanta {

namespace {

// The most that the configuration of the engine builds into one path.
constexpr StageCounts kMostStages{3, 2, 1};

int engineDelay(double rate, const StageCounts& stages) {
    return samplesInSeconds(kSmartClipperSeconds, rate) * stages.outputSmartClippers +
           samplesInSeconds(kLookAheadSeconds, rate) * stages.lookAheadStages +
           kConvolverSamples * stages.outputConvolvers;
}

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

SignalPathDelays::SignalPathDelays(double baseRate, int oversampling, bool truePeakLimiting,
                                   const StageCounts& stages) {
    const double rate = baseRate * oversampling;
    engine = engineDelay(rate, stages);
    truePeak = truePeakLimiting ? exposerDelay(rate) : 0;
    const int engineLatency = engine + truePeak;
    const int whole = (engineLatency + oversampling - 1) / oversampling;
    pad = whole * oversampling - engineLatency;
    converters = converterLatency(baseRate, oversampling);
    const bool smooth = truePeakLimiting || oversampling >= 2;
    overshoot = smooth ? overshootDelay(baseRate, truePeakLimiting) : 0;
    meter = overshoot + converters / 2;
    total = converters + overshoot + whole;
}

SignalPathLimits::SignalPathLimits(double baseRate, int oversampling) {
    const double rate = baseRate * oversampling;
    engine = engineDelay(rate, kMostStages);
    truePeak = exposerDelay(rate);
    overshoot = overshootDelay(baseRate, true);
    meter = overshoot + converterLatency(baseRate, oversampling) / 2;
}

}  // namespace vanta
