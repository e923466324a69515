#pragma once

#include "dsp/detector/db_converter.hpp"
#include "dsp/mixer/mixer.hpp"
#include "dsp/mixer/static_mixer.hpp"
#include "dsp/sr/converter_filter.hpp"
#include "dsp/sr/converter_style.hpp"
#include "foundation/realtime.hpp"
#include "limiter/latency/signal_path_delays.hpp"
#include "wave/delay.hpp"
#include "wave/float_parameter_source.hpp"

namespace vanta {

/// What Gain, Output Level and Unity Gain do behind the engine. The engine has limited at the threshold; the
/// makeup brings the level back up, the overshoot stage holds it at the ceiling, the trim takes the gain back
/// out. All of them wait as the audio does, so that a change arrives everywhere together with the threshold's
/// effect.
class LevelSignals {
public:
    /// The engine's environment, and the style by which the audio leaves it. `mainThreshold` is the engine's,
    /// in dB.
    LevelSignals(wave::Environment& engine, sr::ConverterStyle& style, wave::Producer& mainThreshold);
    ~LevelSignals();

    // As factors.

    /// Output Level less Main Threshold, where the engine's output is. In its environment.
    wave::Producer& makeup() { return makeupDelay_; }
    /// Output Level, where the overshoot stage looks. At the base rate, like those below.
    wave::Producer& ceiling() { return ceilingDelay_; }
    /// Main Threshold less Output Level with Unity Gain on, else 1, where the limited signal is.
    wave::Producer& trim() { return trimDelay_; }
    /// The highest level that leaves the limiter, where the trimmed signal is.
    wave::Producer& target() { return target_; }

    /// dB, along a ramp.
    VANTA_REALTIME void setOutputLevel(float db);
    VANTA_REALTIME void setUnityGain(bool on);
    VANTA_REALTIME void setDelays(const SignalPathDelays& delays);
    /// The most that `setDelays` will ask for. Allocates if it changes.
    void setDelayLimits(const SignalPathLimits& limits);

private:
    /// Turns the makeup into the trim.
    class Trim;

    wave::FloatParameterSource level_;  ///< dB, a little below the ceiling
    StaticMixer makeupSum_;
    DBConverter makeup_;
    wave::DelayFilter makeupDelay_;

    wave::FloatParameterSource ceilingLevel_;  ///< dB
    DBConverter ceiling_;
    wave::DelayFilter enginePathOfCeiling_;
    sr::SkipDecimatorFilter ceilingDecimator_;
    wave::DelayFilter ceilingDelay_;

    wave::FloatParameterSource unityShare_;
    std::unique_ptr<Trim> trim_;
    wave::DelayFilter enginePathOfTrim_;
    sr::SkipDecimatorFilter trimDecimator_;
    wave::DelayFilter trimDelay_;

    wave::DelayFilter ceilingAtOutput_;
    Mixer target_;
};

}  // namespace vanta
