#include "limiter/engine/vca.hpp"

#include <algorithm>

#include "dsp/kernel/mix.hpp"
#include "foundation/numbers.hpp"
#include "limiter/signal_path_delays.hpp"

namespace vanta {

class DynamicsEngine::VCA::LookAheadMixer final : public wave::Source {
public:
    LookAheadMixer(wave::Environment& environment, FloatParameterBus& lookAheadBus, float limit)
        : Source(environment), lookAhead(lookAheadBus), limitMs(limit) {}

protected:
    void produce(wave::BasicBlock<float>* block, int samples, int) override {
        const float* ms = lookAhead.pullData(samples);
        const double rate = environment().sampleRate();
        const int limitSamples = samplesInMs(limitMs, rate);
        float* out = block->data();
        const auto delay = [&](float x) { return static_cast<float>(limitSamples - samplesInMs(x, rate)); };
        if (lookAhead.isConstant()) {
            std::fill(out, out + samples, delay(ms[0]));
            setConstant(true);
        } else {
            std::transform(ms, ms + samples, out, delay);
        }
    }

private:
    FloatParameterBus& lookAhead;
    float limitMs;
};

class DynamicsEngine::VCA::GainFactorConverter final : public wave::Filter {
public:
    explicit GainFactorConverter(wave::Environment& environment, wave::Producer& input)
        : Filter(environment) {
        source = &input;
    }

protected:
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
      limitMs(configuration.lookAheadLimit),
      audioDirect(environment, *this),
      audioDelay(environment),
      audioRouter(environment, 2),
      lookAheadMixer(std::make_unique<LookAheadMixer>(environment, lookAhead, limitMs)),
      gainDelay(environment, configuration.lookAheadLimit),
      gainRouter(environment, 2),
      gainFactor(std::make_unique<GainFactorConverter>(environment, gainRouter)),
      gainFromDb(environment),
      gainOutput(environment, 3),
      multiplier(environment, 1) {
    source = &input;
    audioDelay.source = &input;
    audioRouter.setInput(0, audioDirect);
    audioRouter.setInput(1, audioDelay);

    gainDelay.source = &gainChangeInput;
    gainDelay.delayInterpretation = DelayLine::Samples;
    gainDelay.delay.setSource(lookAheadMixer.get());
    gainRouter.setInput(0, gainChangeInput);
    gainRouter.setInput(1, gainDelay);

    gainFromDb.source = &gainRouter;
    gainFromDb.conversion = DBConverter::DbToAmplitude;
    gainOutput.setInput(Amplitude, *gainFactor);
    gainOutput.setInput(Decibel, gainFromDb);
    gainOutput.setInput(AmplitudeInverse, gainRouter);
    gainOutput.selected = domain.value();

    multiplier.setInput(0, &audioRouter);
    multiplier.gain(0).setSource(&gainOutput);

    makeResettable();
    reset();
}

DynamicsEngine::VCA::~VCA() = default;

void DynamicsEngine::VCA::setConvolverBlock(int samples) {
    convolverBlock = samples;
    updateDelay();
}

int DynamicsEngine::VCA::delayFor(int convolvers, int smartClippers) const {
    const double rate = environment().sampleRate();
    return samplesInMs(limitMs, rate) + samplesInSeconds(kSmartClipperSeconds, rate) * smartClippers +
           convolvers * convolverBlock;
}

int DynamicsEngine::VCA::audioDelaySamples() const {
    return delayFor(numConvolvers, numSmartClippers);
}

void DynamicsEngine::VCA::updateDelay() {
    audioDelay.setMaxDelay(delayFor(numConvolvers.maximum, numSmartClippers.maximum));
    audioDelay.setDelay(audioDelaySamples());
}

void DynamicsEngine::VCA::reset() {
    updateDelay();
}

void DynamicsEngine::VCA::propertyChanged(AbstractProperty& property) {
    if (&property == &domain) {
        gainOutput.selected = domain.value();
    } else if (&property == &numConvolvers || &property == &numSmartClippers) {
        updateDelay();
    } else {
        const int delayed = lookAheadEnabled && numLookAheadStages > 0 ? 1 : 0;
        audioRouter.selected = delayed;
        gainRouter.selected = delayed;
    }
}

void DynamicsEngine::VCA::process(const wave::BasicBlock<float>&, wave::BasicBlock<float>*, int samples,
                                  int) {
    multiplier.pull(samples);
    publish(multiplier);
}

}  // namespace vanta
