#pragma once

#include "dsp/db_converter.hpp"
#include "dsp/delay_line.hpp"
#include "dsp/mixer.hpp"
#include "foundation/property.hpp"
#include "limiter/engine/dynamics_engine.hpp"
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
    wave::Producer& gain() { return gainOutput; }
    /// Samples of latency of one Convolver in the gain path.
    void setConvolverBlock(int samples);
    /// Samples by which the audio is delayed while look-ahead is on.
    int audioDelaySamples() const;

    void reset() override;

    FloatParameterBus lookAhead;  ///< ms
    Property<int> domain;
    Property<int> numLookAheadStages;  ///< of the engine; without one nothing is delayed
    Property<bool> lookAheadEnabled;
    LimitedProperty<int> numConvolvers;     ///< in the gain path
    LimitedProperty<int> numSmartClippers;  ///< in the gain path

protected:
    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                 int flags) override;
    void propertyChanged(AbstractProperty& property) override;

private:
    /// Turns a look-ahead in ms into the delay of the gain, in samples.
    class LookAheadMixer;
    /// 1 - x
    class GainFactorConverter;

    void updateDelay();
    int delayFor(int convolvers, int smartClippers) const;

    float limitMs;
    int convolverBlock = 256;
    wave::InputForwarder audioDirect;
    wave::DelayFilter audioDelay;
    Router audioRouter;
    std::unique_ptr<LookAheadMixer> lookAheadMixer;
    DelayLine gainDelay;
    Router gainRouter;
    std::unique_ptr<GainFactorConverter> gainFactor;
    DBConverter gainFromDb;
    Router gainOutput;
    Mixer multiplier;
};

}  // namespace vanta
