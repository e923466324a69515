#include "limiter/engine/dynamics_processor.hpp"

#include <algorithm>

#include "dsp/convolver/smoothing_kernel.hpp"
#include "limiter/engine/engine_inputs.hpp"
#include "limiter/engine/engine_parameters.hpp"
#include "limiter/engine/stereo_linker.hpp"

namespace vanta {

namespace {

constexpr int kTapDelaySamples = 256;

template <typename Element>
std::vector<wave::Producer*> asProducers(const std::vector<std::unique_ptr<Element>>& elements,
                                         int capacity) {
    std::vector<wave::Producer*> result(static_cast<std::size_t>(capacity), nullptr);
    std::transform(elements.begin(), elements.end(), result.begin(), [](const auto& e) { return e.get(); });
    return result;
}

}  // namespace

DynamicsEngine::Processor::Processor(DynamicsEngine& dynamicsEngine, int channel,
                                     wave::Producer& channelSignal)
    : Filter(dynamicsEngine.environment(), wave::OwnBlock::No),
      engine(dynamicsEngine),
      layout(dynamicsEngine.layout()),
      audioInput(environment(), *this),
      triggerInput(environment()),
      voice(dynamicsEngine.matrix().createVoice()),
      filterMonitor(environment(), layout.group(ElementKind::Filter).capacity),
      outputRouter(environment(), 2),
      tapDelay(environment()) {
    source = &channelSignal;
    triggerInput.source = &audioInput;
    voice.setSource(kAudioInputSource, audioInput);
    voice.setSource(kTriggerInputSource, triggerInput);
    outputRouter.setInput(0, voice.controller(kOutputTarget));
    outputRouter.setInput(1, filterMonitor);
    tapDelay.setMaxDelay(kTapDelaySamples);
    tapDelay.setDelay(kTapDelaySamples);

    buildFilters();
    buildDetectors(channel);
    buildTimeElements();
    buildCapacitors();
    buildMixers();
    buildDelays();
    buildVcas();
    engine.processors_.push_back(this);
    rebuildConvolvers();
}

DynamicsEngine::Processor::~Processor() {
    std::erase(engine.processors_, this);
}

wave::Producer& DynamicsEngine::Processor::input(ElementKind kind, int element, int index) {
    return voice.controller(layout.targetIndex(kind, element, index));
}

void DynamicsEngine::Processor::setSource(ElementKind kind, int element, wave::Producer& producer) {
    voice.setSource(layout.sourceIndex(kind, element), producer);
}

int DynamicsEngine::Processor::position(ElementKind kind, int element, int parameter) const {
    return layout.position(kind, element, parameter);
}

int DynamicsEngine::Processor::built(ElementKind kind) const {
    return layout.group(kind).built;
}

void DynamicsEngine::Processor::buildFilters() {
    Parameters& parameters = engine.parameters();
    const ElementKind kind = ElementKind::Filter;
    std::vector<NumActiveParameter::Slot> active(static_cast<std::size_t>(layout.group(kind).capacity));
    for (int i = 0; i < built(kind); ++i) {
        filters.push_back(std::make_unique<FilterSet>(environment()));
        FilterSet& set = *filters.back();
        set.highPass.source = &input(kind, i, FilterInput::Signal);
        set.highPass.shape = AnalogFilterPrototype::HighPass;
        set.highPass.coefficientCalculation = EQFilter::Bilinear;
        set.highPass.frequency.setSource(&input(kind, i, FilterInput::HighPassFreq));
        set.lowPass.source = &set.highPass;
        set.lowPass.shape = AnalogFilterPrototype::LowPass;
        set.lowPass.coefficientCalculation = EQFilter::Bilinear;
        set.lowPass.frequency.setSource(&input(kind, i, FilterInput::LowPassFreq));
        parameters.drive(position(kind, i, kFilterSlope), set.highPass.slope);
        parameters.drive(position(kind, i, kFilterSlope), set.lowPass.slope);
        parameters.switchOff(position(kind, i, kFilterHighPassFreq), set.highPass.enabled);
        parameters.switchOff(position(kind, i, kFilterLowPassFreq), set.lowPass.enabled);

        filterMonitor.setInput(i, &set.lowPass);
        filterMonitor.gain(i).parameter().setValue(0.0f, 0.0f);
        filterSolo.push_back(std::make_unique<Property<bool>>(this, false));
        parameters.drive(position(kind, i, kFilterSolo), *filterSolo.back());
        setSource(kind, i, set.lowPass);
        active[static_cast<std::size_t>(i)] = {&set.highPass, &set.lowPass};
    }
    parameters.numActive(kind).attach(std::move(active));
}

void DynamicsEngine::Processor::buildDetectors(int channel) {
    Parameters& parameters = engine.parameters();
    const ElementKind kind = ElementKind::Detector;
    const DynamicsEngineConfiguration& configuration = layout.configuration();
    std::vector<NumActiveParameter::Slot> active(static_cast<std::size_t>(layout.group(kind).capacity));
    for (int i = 0; i < built(kind); ++i) {
        wave::Producer& signal = input(kind, i, DetectorInput::Signal);
        engine.linker(i).setSource(channel, signal);
        detectors.push_back(std::make_unique<DetectorChain>(
            environment(), signal, engine.linker(i).output(channel), configuration.rmsWindowLimit,
            i < configuration.maxOutputSmartClippers));
        DetectorChain& chain = *detectors.back();
        chain.linkMix.mix.setSource(&input(kind, i, DetectorInput::Link));
        chain.rms.window.setSource(&input(kind, i, DetectorInput::RmsWindow));
        chain.detector.knee.setSource(&input(kind, i, DetectorInput::Knee));
        chain.detector.threshold.setSource(&input(kind, i, DetectorInput::Threshold));
        chain.detector.hysteresis.setSource(&input(kind, i, DetectorInput::Hysteresis));
        chain.detector.ratio.setSource(&input(kind, i, DetectorInput::Ratio));
        chain.detector.limit.setSource(&input(kind, i, DetectorInput::Limit));

        parameters.drive(position(kind, i, kDetectorMode), chain.modeRouter.selected);
        parameters.drive(position(kind, i, kDetectorMode), chain.output.selected);
        parameters.drive(position(kind, i, kDetectorDomain), chain.domainRouter.selected);
        parameters.drive(position(kind, i, kDetectorDomain), chain.detector.domain);
        parameters.drive(position(kind, i, kDetectorPurpose), chain.detector.purpose);
        parameters.drive(position(kind, i, kDetectorKneeStyle), chain.detector.kneeStyle);
        if (chain.clipper) {
            chain.clipper->threshold.setSource(&input(kind, i, DetectorInput::Threshold));
            parameters.drive(position(kind, i, kDetectorDomain), chain.clipper->domain);
        }
        setSource(kind, i, chain.output);
        active[static_cast<std::size_t>(i)] = chain.statefulNodes();
    }
    parameters.numActive(kind).attach(std::move(active));
}

void DynamicsEngine::Processor::buildTimeElements() {
    Parameters& parameters = engine.parameters();
    const DynamicsEngineConfiguration& configuration = layout.configuration();
    for (int i = 0; i < built(ElementKind::PeakHold); ++i) {
        peakHolds.push_back(std::make_unique<PeakHold>(environment(), configuration.peakHoldLimit));
        peakHolds.back()->source = &input(ElementKind::PeakHold, i, PeakHoldInput::Signal);
        peakHolds.back()->hold.setSource(&input(ElementKind::PeakHold, i, PeakHoldInput::Hold));
        setSource(ElementKind::PeakHold, i, *peakHolds.back());
    }
    parameters.numActive(ElementKind::PeakHold)
        .attach(asProducers(peakHolds, layout.group(ElementKind::PeakHold).capacity));

    const ElementKind averaging = ElementKind::AveragingFilter;
    for (int i = 0; i < built(averaging); ++i) {
        averagingFilters.push_back(
            std::make_unique<AveragingFilter>(environment(), configuration.averagingLimit));
        AveragingFilter& filter = *averagingFilters.back();
        filter.source = &input(averaging, i, AveragingFilterInput::Signal);
        filter.window.setSource(&input(averaging, i, AveragingFilterInput::WindowSize));
        parameters.drive(position(averaging, i, kAveragingFilterPower), filter.power);
        setSource(averaging, i, filter);
    }
    parameters.numActive(averaging).attach(asProducers(averagingFilters, layout.group(averaging).capacity));
}

void DynamicsEngine::Processor::buildCapacitors() {
    const ElementKind kind = ElementKind::Capacitor;
    for (int i = 0; i < built(kind); ++i) {
        capacitors.push_back(std::make_unique<Capacitor>(environment(), capacitorStyle));
        Capacitor& capacitor = *capacitors.back();
        capacitor.source = &input(kind, i, CapacitorInput::Signal);
        capacitor.attack.setSource(&input(kind, i, CapacitorInput::Attack));
        capacitor.attackCurve.setSource(&input(kind, i, CapacitorInput::AttackCurve));
        capacitor.attackSmoothing.setSource(&input(kind, i, CapacitorInput::AttackSmoothing));
        capacitor.release.setSource(&input(kind, i, CapacitorInput::Release));
        capacitor.releaseCurve.setSource(&input(kind, i, CapacitorInput::ReleaseCurve));
        capacitor.releaseSmoothing.setSource(&input(kind, i, CapacitorInput::ReleaseSmoothing));
        capacitor.hold.setSource(&input(kind, i, CapacitorInput::Hold));
        setSource(kind, i, capacitor);
    }
    engine.parameters().numActive(kind).attach(asProducers(capacitors, layout.group(kind).capacity));
}

void DynamicsEngine::Processor::buildMixers() {
    Parameters& parameters = engine.parameters();
    const ElementKind curve = ElementKind::TransferCurve;
    for (int i = 0; i < built(curve); ++i) {
        transferCurves.push_back(std::make_unique<TransferCurveProcessor>(environment()));
        transferCurves.back()->source = &input(curve, i, TransferCurveInput::Signal);
        transferCurves.back()->strength.setSource(&input(curve, i, TransferCurveInput::Strength));
        parameters.drive(position(curve, i, kTransferCurveFunction), transferCurves.back()->function);
        setSource(curve, i, *transferCurves.back());
    }
    parameters.numActive(curve).attach(asProducers(transferCurves, layout.group(curve).capacity));

    for (int i = 0; i < built(ElementKind::Mixer); ++i) {
        mixers.push_back(std::make_unique<EffectMixer>(environment(),
                                                       input(ElementKind::Mixer, i, MixerInput::Signal1),
                                                       input(ElementKind::Mixer, i, MixerInput::Signal2)));
        mixers.back()->panningLaw = EffectMixer::Linear;
        mixers.back()->mix.setSource(&input(ElementKind::Mixer, i, MixerInput::Mix));
        setSource(ElementKind::Mixer, i, *mixers.back());
    }
    parameters.numActive(ElementKind::Mixer)
        .attach(asProducers(mixers, layout.group(ElementKind::Mixer).capacity));

    const ElementKind op = ElementKind::Operator;
    for (int i = 0; i < built(op); ++i) {
        operators.push_back(std::make_unique<Mixer>(environment(), 2));
        operators.back()->setInput(0, &input(op, i, OperatorInput::Signal1));
        operators.back()->setInput(1, &input(op, i, OperatorInput::Signal2));
        parameters.drive(position(op, i, kOperatorOperation), operators.back()->operation);
        setSource(op, i, *operators.back());
    }
    parameters.numActive(op).attach(asProducers(operators, layout.group(op).capacity));
}

void DynamicsEngine::Processor::buildDelays() {
    const ElementKind kind = ElementKind::Delay;
    for (int i = 0; i < built(kind); ++i) {
        delays.push_back(std::make_unique<DelayLine>(environment(), layout.configuration().delayLimit));
        delays.back()->source = &input(kind, i, DelayInput::Signal);
        delays.back()->delay.setSource(&input(kind, i, DelayInput::Delay));
        delays.back()->delayInterpretation = DelayLine::Milliseconds;
        setSource(kind, i, *delays.back());
    }
    engine.parameters().numActive(kind).attach(asProducers(delays, layout.group(kind).capacity));
    for (int i = 0; i < built(ElementKind::Constant); ++i) {
        setSource(ElementKind::Constant, i, input(ElementKind::Constant, i, ConstantInput::Value));
    }
}

void DynamicsEngine::Processor::buildVcas() {
    Parameters& parameters = engine.parameters();
    const ElementKind kind = ElementKind::Vca;
    for (int i = 0; i < built(kind); ++i) {
        vcas.push_back(std::make_unique<VCA>(environment(), layout.configuration(),
                                             input(kind, i, VcaInput::Signal),
                                             input(kind, i, VcaInput::GainChange)));
        VCA& vca = *vcas.back();
        vca.lookAhead.setSource(&input(kind, i, VcaInput::LookAhead));
        parameters.drive(kLookAheadStagesPosition, vca.numLookAheadStages);
        parameters.drive(position(kind, i, kVcaLookAheadEnabled), vca.lookAheadEnabled);
        parameters.drive(position(kind, i, kVcaDomain), vca.domain);
        parameters.drive(position(kind, i, kVcaConvolvers), vca.numConvolvers);
        parameters.drive(position(kind, i, kVcaSmartClippers), vca.numSmartClippers);
        setSource(kind, i, vca);
    }
    parameters.numActive(kind).attach(asProducers(vcas, layout.group(kind).capacity));
}

void DynamicsEngine::Processor::dropConvolvers() {
    convolvers.clear();
}

void DynamicsEngine::Processor::rebuildConvolvers() {
    convolvers.clear();
    const ElementKind kind = ElementKind::Convolver;
    for (int i = 0; i < static_cast<int>(engine.kernels().size()); ++i) {
        SmoothingKernel& kernel = *engine.kernels()[static_cast<std::size_t>(i)];
        convolvers.push_back(std::make_unique<Convolver>(environment(), kernel));
        convolvers.back()->source = &input(kind, i, ConvolverInput::Signal);
        if (i != tapIndex) setSource(kind, i, *convolvers.back());
    }
    for (auto& vca : vcas) vca->setConvolverBlock(engine.convolverLatency());
}

void DynamicsEngine::Processor::setTap(int index) {
    const ElementKind kind = ElementKind::Convolver;
    if (tapIndex >= 0) setSource(kind, tapIndex, *convolvers[static_cast<std::size_t>(tapIndex)]);
    if (index >= 0) {
        tapDelay.source = &input(kind, index, ConvolverInput::Signal);
        setSource(kind, index, tapDelay);
    }
    tapIndex = index;
}

void DynamicsEngine::Processor::linkTo(Processor& partner) {
    for (std::size_t i = 0; i < capacitors.size(); ++i) {
        Capacitor* other = i < partner.capacitors.size() ? partner.capacitors[i].get() : nullptr;
        capacitors[i]->setPartner(other);
    }
}

void DynamicsEngine::Processor::process(const wave::BasicBlock<float>&, wave::BasicBlock<float>*, int samples,
                                        int) {
    outputRouter.pull(samples);
    publish(outputRouter);
}

// Solo listens to the filters that have it set, in place of the output.
void DynamicsEngine::Processor::propertyChanged(AbstractProperty&) {
    bool anySolo = false;
    for (std::size_t i = 0; i < filterSolo.size(); ++i) {
        filterMonitor.gain(static_cast<int>(i)).parameter().setValue(*filterSolo[i] ? 1.0f : 0.0f, -1.0f);
        anySolo = anySolo || *filterSolo[i];
    }
    outputRouter.selected = anySolo ? 1 : 0;
}

}  // namespace vanta
