#pragma once

#include "limiter/styles/dynamics_engine_configuration.hpp"

namespace vanta {

/// What lies in a path of gain, and delays the audio that waits for it.
struct StageCounts {
    int lookAheadStages = 0;
    int outputConvolvers = 0;
    int outputSmartClippers = 0;
};

/// All delays of the limiter's path, from what determines them. Pure arithmetic, for any thread: the latency
/// of a setting is known before the audio thread has taken it up.
struct SignalPathDelays {
    SignalPathDelays(double baseRate, int oversampling, bool truePeakLimiting, const StageCounts& stages);

    // Samples at the oversampled rate.
    int engine;    ///< look-ahead, smoothing and clipping
    int truePeak;  ///< the exposer in front of the detection
    int pad;       ///< makes the oversampled path a whole number of samples at the base rate

    // Samples at the base rate.
    int converters;  ///< up and down together
    int overshoot;   ///< by which the audio waits for the overshoot stage
    int detection;   ///< from the end of the oversampled path to what the overshoot stage looks at
    int meter;       ///< from the end of the oversampled path to the output, for what goes beside it
    int total;       ///< as reported to the host
};

/// The most that an engine of this configuration can put into one path.
StageCounts mostStages(const DynamicsEngineConfiguration& configuration);

/// The longest that each delay of the path can become at a rate, in samples of its own domain.
struct SignalPathLimits {
    SignalPathLimits(double baseRate, int oversampling, const StageCounts& most);

    int engine;
    int truePeak;
    int overshoot;
    int meter;
    int pad = 32;
};

/// The longest latency that any setting has at a rate in Hz, in samples of that rate.
int largestLatency(double baseRate, const StageCounts& most);

/// Samples by which a Convolver of the engine delays: the size of its transform.
inline constexpr int kConvolverSamples = 256;

/// Samples of delay of these stages together, at the rate at which the engine runs.
int stageDelay(double rate, const StageCounts& stages);

/// How the limiter's converters and exposers are designed.
inline constexpr double kConverterAttenuationDb = 90.0;
inline constexpr double kExposerAttenuationDb = 60.0;
inline constexpr double kPassbandHz = 20000.0;

}  // namespace vanta
