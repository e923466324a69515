#pragma once

#include "dsp/delay/delay_line.hpp"
#include "dsp/detector/db_converter.hpp"
#include "dsp/mixer/mixer.hpp"
#include "foundation/property.hpp"
#include "limiter/engine/dynamics_engine.hpp"
#include "limiter/engine/signal_limit.hpp"
#include "limiter/latency/signal_path_delays.hpp"
#include "wave/delay.hpp"
#include "wave/float_parameter_source.hpp"
#include "wave/router.hpp"

namespace vanta {

/// Where gain meets audio. The audio is delayed by a fixed time, the look-ahead limit and what the gain path
/// costs; the gain by the limit less the look-ahead, so that it leads the audio by the look-ahead.
class DynamicsEngine::VCA final : public wave::Filter, public PropertyOwner {
public:
    /// What a Gain Change block means.
    enum Domain {
        Amplitude,        ///< the share to take away: gain = 1 - x
        Decibel,          ///< gain = 10^(x/20)
        AmplitudeInverse  ///< the gain itself
    };

    /// `gainChangeInput` may not be null later than the first block.
    VCA(wave::Environment& environment, const DynamicsEngineConfiguration& configuration,
        wave::Producer& input, wave::Producer& gainChangeInput);
    ~VCA() override;

    /// The gain that the product uses, with the delay of the gain path.
    wave::Producer& gain() { return *gain_; }
    /// Samples of latency of one Convolver in the gain path. Set-up.
    void setConvolverBlock(int samples);
    /// Lets look-ahead move in a course: the gain crossfades from one delay to the next. Without one it
    /// glides.
    VANTA_REALTIME void follow(const LookAheadCourse* course);
    /// Samples by which the audio is delayed while look-ahead is on.
    int audioDelaySamples() const;

    void prepare() override;

    wave::FloatParameterBus lookAhead;  ///< ms
    Property<int> domain;
    Property<int> numLookAheadStages;  ///< of the engine; without one nothing is delayed
    Property<bool> lookAheadEnabled;
    LimitedProperty<int> numConvolvers;     ///< in the gain path
    LimitedProperty<int> numSmartClippers;  ///< in the gain path

protected:
    bool settled() const override { return true; }
    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                 int flags) override;
    void propertyChanged(AbstractProperty& property) override;

private:
    /// Turns a look-ahead in ms into the delay of the gain, in samples.
    class LookAheadMixer;
    /// 1 - x
    class GainFactorConverter;

    VANTA_REALTIME void updateDelay();
    int delayFor(int convolvers, int smartClippers) const;

    float limitMs_;
    int convolverBlock_ = kConvolverSamples;
    wave::InputForwarder audioDirect_;
    wave::DelayFilter audioDelay_;
    wave::Router audioRouter_;
    std::unique_ptr<LookAheadMixer> lookAheadMixer_;
    DelayLine gainDelay_;
    wave::Router gainRouter_;
    std::unique_ptr<GainFactorConverter> gainFactor_;
    DBConverter gainFromDb_;
    wave::Router gainOutput_;
    std::unique_ptr<SignalLimit> gainLimit_;  ///< null where signals are not limited
    wave::Producer* gain_ = &gainOutput_;
    Mixer multiplier_;
};

}  // namespace vanta
