#include "limiter/engine/dynamics_processor.hpp"

#include "dsp/convolver/smoothing_kernel.hpp"
#include "limiter/latency/signal_path_delays.hpp"

namespace vanta {

namespace {

/// 24 dB above full scale. What holds the ceiling behind the engine can take a gain that is much smaller back
/// only as exactly as its window adds up.
constexpr float kLargestOutput = 16.0f;

}  // namespace

DynamicsEngine::Processor::Processor(DynamicsEngine& engine, int channel, wave::Producer& channelSignal)
    : Filter(engine.environment(), wave::OwnBlock::No),
      engine_(engine),
      audioInput_(environment(), *this),
      triggerInput_(environment()),
      voice_(engine.matrix().createVoice()),
      elements_(engine, voice_, channel),
      filterMonitor_(environment(), engine.layout().group(ElementKind::Filter).capacity),
      outputRouter_(environment(), 2),
      tapDelay_(environment()) {
    source = &channelSignal;
    triggerInput_.source = &audioInput_;
    voice_.setSource(kAudioInputSource, audioInput_);
    voice_.setSource(kTriggerInputSource, triggerInput_);
    outputRouter_.setInput(0, voice_.controller(kOutputTarget));
    outputRouter_.setInput(1, filterMonitor_);
    if (engine.layout().configuration().limitsSignals) {
        outputLimit_ = std::make_unique<SignalLimit>(environment(), outputRouter_, kLargestOutput);
        output_ = outputLimit_.get();
    }
    tapDelay_.setMaxDelay(kConvolverSamples);
    tapDelay_.setDelay(kConvolverSamples);
    buildSolo();
    engine_.processors_.push_back(this);
    rebuildConvolvers();
}

DynamicsEngine::Processor::~Processor() {
    std::erase(engine_.processors_, this);
}

void DynamicsEngine::Processor::buildSolo() {
    int i = 0;
    for (const auto& filter : elements_.filters()) {
        filterMonitor_.setInput(i, &filter->lowPass);
        filterMonitor_.gain(i).parameter().setValue(0.0f, 0.0f);
        filterSolo_.push_back(std::make_unique<Property<bool>>(this, false));
        ElementWiring<ElementKind::Filter>(engine_, voice_, i++).drive("Solo", *filterSolo_.back());
    }
}

void DynamicsEngine::Processor::rebuildConvolvers() {
    convolvers_.clear();
    int i = 0;
    for (const auto& kernel : engine_.kernels()) {
        convolvers_.push_back(std::make_unique<Convolver>(environment(), *kernel));
        const auto wiring = convolverWiring(i);
        convolvers_.back()->source = &wiring.input("Input");
        if (i != tapIndex_) wiring.setSource(*convolvers_.back());
        ++i;
    }
    for (const auto& vca : elements_.vcas()) vca->setConvolverBlock(engine_.convolverLatency());
}

void DynamicsEngine::Processor::setTap(int index) {
    if (tapIndex_ >= 0) {
        convolverWiring(tapIndex_).setSource(*convolvers_[static_cast<std::size_t>(tapIndex_)]);
    }
    if (index >= 0) {
        tapDelay_.source = &convolverWiring(index).input("Input");
        convolverWiring(index).setSource(tapDelay_);
    }
    tapIndex_ = index;
    environment().noteChange();
}

void DynamicsEngine::Processor::linkTo(Processor& partner) {
    const auto own = elements_.capacitors();
    const auto others = partner.elements_.capacitors();
    for (std::size_t i = 0; i < own.size(); ++i) {
        own[i]->setPartner(i < others.size() ? others[i].get() : nullptr);
    }
}

void DynamicsEngine::Processor::process(const wave::BasicBlock<float>&, wave::BasicBlock<float>*, int samples,
                                        int) {
    output_->pull(samples);
    publish(*output_);
}

// Solo listens to the filters that have it set, in place of the output.
void DynamicsEngine::Processor::propertyChanged(AbstractProperty&) {
    bool anySolo = false;
    for (std::size_t i = 0; i < filterSolo_.size(); ++i) {
        filterMonitor_.gain(static_cast<int>(i)).parameter().setValue(*filterSolo_[i] ? 1.0f : 0.0f, -1.0f);
        anySolo = anySolo || *filterSolo_[i];
    }
    outputRouter_.selected = anySolo ? 1 : 0;
}

}  // namespace vanta
