#pragma once

#include "dsp/detector/db_converter.hpp"
#include "dsp/mixer/static_mixer.hpp"
#include "foundation/realtime.hpp"
#include "wave/delay.hpp"
#include "wave/float_parameter_source.hpp"

namespace vanta {

/// Brings the level back up after the engine, which has limited at the threshold: Output Level less
/// Main Threshold, as a factor. It waits as long as the engine's output does, so that a change of Gain or
/// Output Level reaches the audio together with the threshold's effect.
class MakeupGain {
public:
    /// In the engine's environment. `mainThreshold` is the engine's, in dB.
    MakeupGain(wave::Environment& environment, wave::Producer& mainThreshold);

    wave::Producer& gain() { return makeupDelay_; }
    /// Output Level as a factor. It moves as the makeup does: it never meets audio of another level.
    wave::Producer& ceiling() { return ceilingDelay_; }

    /// dB, along a ramp.
    VANTA_REALTIME void setOutputLevel(float db);
    /// Samples of delay of the engine's output.
    VANTA_REALTIME void setDelay(int samples);
    /// The most that `setDelay` will ask for. Allocates if it changes.
    void setMaxDelay(int samples);

private:
    wave::FloatParameterSource makeupLevel_;
    StaticMixer makeupSum_;
    DBConverter makeupConverter_;
    wave::DelayFilter makeupDelay_;
    DBConverter ceilingConverter_;
    wave::DelayFilter ceilingDelay_;
};

}  // namespace vanta
