#include "limiter/engine/vca.hpp"

#include <algorithm>

#include "foundation/numbers.hpp"
#include "kernel/mix.hpp"
#include "limiter/clippers/smart_clipper.hpp"

namespace vanta {

class DynamicsEngine::VCA::LookAheadMixer final : public wave::Source {
public:
    LookAheadMixer(wave::Environment& environment, wave::FloatParameterBus& lookAhead, float limitMs)
        : Source(environment), lookAhead_(lookAhead), limitMs_(limitMs) {}

protected:
    bool settled() const override { return true; }
    void produce(wave::BasicBlock<float>* block, int samples, int) override {
        const float* ms = lookAhead_.pullData(samples);
        const double rate = environment().sampleRate();
        const int limitSamples = samplesInMs(limitMs_, rate);
        float* out = block->data();
        const auto delay = [&](float x) { return static_cast<float>(limitSamples - samplesInMs(x, rate)); };
        if (lookAhead_.isConstant()) {
            std::fill(out, out + samples, delay(ms[0]));
            setConstant(true);
        } else {
            std::transform(ms, ms + samples, out, delay);
        }
    }

private:
    wave::FloatParameterBus& lookAhead_;
    float limitMs_;
};

class DynamicsEngine::VCA::GainFactorConverter final : public wave::Filter {
public:
    explicit GainFactorConverter(wave::Environment& environment, wave::Producer& input)
        : Filter(environment) {
        source = &input;
    }

protected:
    bool settled() const override { return true; }
    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples, int) override {
        if (source->isConstant()) {
            std::fill(out->data(), out->data() + samples, 1.0f - in[0]);
            setConstant(true);
        } else {
            kernel::complement(in.data(), out->data(), static_cast<std::size_t>(samples));
        }
    }
};

DynamicsEngine::VCA::VCA(wave::Environment& environment, const DynamicsEngineConfiguration& configuration,
                         wave::Producer& input, wave::Producer& gainChangeInput)
    : Filter(environment, wave::OwnBlock::No),
      lookAhead(environment, 0.0f, 0.0f, configuration.lookAheadLimit),
      domain(this, Decibel),
      numLookAheadStages(this, 0),
      lookAheadEnabled(this, false),
      numConvolvers(this, 0, configuration.maxConvolversInGainPath, 0),
      numSmartClippers(this, 0, configuration.maxSmartClippersInGainPath, 0),
      limitMs_(configuration.lookAheadLimit),
      audioDirect_(environment, *this),
      audioDelay_(environment),
      audioRouter_(environment, 2),
      lookAheadMixer_(std::make_unique<LookAheadMixer>(environment, lookAhead, limitMs_)),
      gainDelay_(environment, configuration.lookAheadLimit),
      gainRouter_(environment, 2),
      gainFactor_(std::make_unique<GainFactorConverter>(environment, gainRouter_)),
      gainFromDb_(environment),
      gainOutput_(environment, 3),
      multiplier_(environment, 1) {
    source = &input;
    audioDelay_.source = &input;
    audioRouter_.setInput(0, audioDirect_);
    audioRouter_.setInput(1, audioDelay_);

    gainDelay_.source = &gainChangeInput;
    gainDelay_.delayInterpretation = DelayLine::Samples;
    gainDelay_.delay.setSource(lookAheadMixer_.get());
    gainRouter_.setInput(0, gainChangeInput);
    gainRouter_.setInput(1, gainDelay_);

    gainFromDb_.source = &gainRouter_;
    gainFromDb_.conversion = DBConverter::DbToAmplitude;
    gainOutput_.setInput(Amplitude, *gainFactor_);
    gainOutput_.setInput(Decibel, gainFromDb_);
    gainOutput_.setInput(AmplitudeInverse, gainRouter_);
    gainOutput_.selected = domain.value();

    if (configuration.limitsSignals) {
        gainLimit_ = std::make_unique<SignalLimit>(environment, gainOutput_, kernel::kLargestSample);
        gain_ = gainLimit_.get();
    }
    multiplier_.setInput(0, &audioRouter_);
    multiplier_.gain(0).setSource(gain_);

    makeResettable();
    reset();
}

DynamicsEngine::VCA::~VCA() = default;

void DynamicsEngine::VCA::setConvolverBlock(int samples) {
    convolverBlock_ = samples;
    updateDelay();
}

void DynamicsEngine::VCA::follow(const LookAheadCourse* course) {
    gainDelay_.readType = course ? DelayLine::Switched : DelayLine::Interpolated;
    if (course) gainDelay_.setHandover({course->fade, 0});
}

int DynamicsEngine::VCA::delayFor(int convolvers, int smartClippers) const {
    const double rate = environment().sampleRate();
    return samplesInMs(limitMs_, rate) +
           samplesInSeconds(SmartClipper::kWindowSeconds, rate) * smartClippers +
           convolvers * convolverBlock_;
}

int DynamicsEngine::VCA::audioDelaySamples() const {
    return delayFor(numConvolvers, numSmartClippers);
}

void DynamicsEngine::VCA::updateDelay() {
    audioDelay_.setMaxDelay(delayFor(numConvolvers.maximum, numSmartClippers.maximum));
    audioDelay_.setDelay(audioDelaySamples());
}

void DynamicsEngine::VCA::prepare() {
    updateDelay();
}

void DynamicsEngine::VCA::propertyChanged(AbstractProperty& property) {
    if (&property == &domain) {
        gainOutput_.selected = domain.value();
    } else if (&property == &numConvolvers || &property == &numSmartClippers) {
        updateDelay();
    } else {
        const int delayed = lookAheadEnabled && numLookAheadStages > 0 ? 1 : 0;
        audioRouter_.selected = delayed;
        gainRouter_.selected = delayed;
    }
}

void DynamicsEngine::VCA::process(const wave::BasicBlock<float>&, wave::BasicBlock<float>*, int samples,
                                  int) {
    multiplier_.pull(samples);
    publish(multiplier_);
}

}  // namespace vanta
