#include "limiter/engine/element_pool.hpp"

#include <utility>

#include "limiter/engine/stereo_linker.hpp"

namespace vanta {
namespace {

// The choices that a style makes by their labels are what the elements understand by them.
static_assert(choicesAre(
    ElementKind::Filter, "Slope",
    {{"6", EQFilter::Order1}, {"12", EQFilter::Order2}, {"24", EQFilter::Order4}, {"48", EQFilter::Order8}}));
static_assert(choicesAre(ElementKind::Saturator, "Transfer Function",
                         {{"ArcTan", WaveShaper::ArcTan},
                          {"Exp", WaveShaper::Exp},
                          {"DivAbs", WaveShaper::DivAbs},
                          {"DivRootSquare", WaveShaper::DivRootSquare},
                          {"TanHyperbolic", WaveShaper::TanHyperbolic},
                          {"ErrorFunction", WaveShaper::ErrorFunction},
                          {"Sine", WaveShaper::Sine},
                          {"PolynomeOrder2", WaveShaper::PolynomeOrder2},
                          {"PolynomeOrder3", WaveShaper::PolynomeOrder3},
                          {"PolynomeOrder4", WaveShaper::PolynomeOrder4},
                          {"PolynomeOrder5", WaveShaper::PolynomeOrder5},
                          {"Tube", WaveShaper::Tube},
                          {"Triode", WaveShaper::Triode},
                          {"Rectify", WaveShaper::Rectify}}));
static_assert(choicesAre(ElementKind::Crossover, "Processing Mode",
                         {{"Filters", DynamicsEngine::BandSplitter::Filters},
                          {"Subtract", DynamicsEngine::BandSplitter::Subtract}}));
static_assert(choicesAre(ElementKind::Crossover, "Filter Slope",
                         {{"6 dB/oct", CrossoverFilter::Order1},
                          {"12 dB/oct", CrossoverFilter::Order2},
                          {"24 dB/oct", CrossoverFilter::Order4}}));
static_assert(choicesAre(ElementKind::Converter, "Conversion",
                         {{"Ampl to dB", DBConverter::AmplitudeToDb},
                          {"dB to Ampl", DBConverter::DbToAmplitude},
                          {"Ampl GC to dB", DBConverter::AmplitudeGainChangeToDb},
                          {"dB to Ampl GC", DBConverter::DbToAmplitudeGainChange}}));
static_assert(choicesAre(ElementKind::Detector, "Mode",
                         {{"Peak", DetectorChain::Peak},
                          {"RMS", DetectorChain::Rms},
                          {"Smart Clipping", DetectorChain::SmartClipping}}));
static_assert(choicesAre(ElementKind::Detector, "Purpose",
                         {{"Compress", Detector::Compress},
                          {"Expand Down", Detector::ExpandDown},
                          {"Expand Up", Detector::ExpandUp}}));
static_assert(choicesAre(ElementKind::Detector, "Domain",
                         {{"Amplitude", GainChangeDomain::Amplitude}, {"dB", GainChangeDomain::Decibels}}));
static_assert(choicesAre(ElementKind::Detector, "Knee Style",
                         {{"Normal", Detector::Normal}, {"Clipping", Detector::Clipping}}));
static_assert(choicesAre(ElementKind::TransferCurve, "Function",
                         {{"Exp", TransferCurveProcessor::Exp}, {"Power", TransferCurveProcessor::Power}}));
static_assert(choicesAre(ElementKind::Operator, "Operation",
                         {{"Maximize", Mixer::Maximize},
                          {"Minimize", Mixer::Minimize},
                          {"Multiply", Mixer::Multiply},
                          {"Divide", Mixer::Divide}}));
static_assert(choicesAre(ElementKind::Vca, "Domain",
                         {{"Amplitude", DynamicsEngine::VCA::Amplitude},
                          {"dB", DynamicsEngine::VCA::Decibel},
                          {"Amplitude Inverse", DynamicsEngine::VCA::AmplitudeInverse}}));

template <typename Element, typename... Arguments>
Element& add(ElementPool::List<Element>& list, Arguments&&... arguments) {
    return *list.emplace_back(std::make_unique<Element>(std::forward<Arguments>(arguments)...));
}

}  // namespace

ElementPool::ElementPool(DynamicsEngine& engine, ModulationMatrix::VoiceMatrix& voice, int channel)
    : engine_(engine), channel_(channel) {
    build<ElementKind::Filter>(engine, voice);
    build<ElementKind::Saturator>(engine, voice);
    build<ElementKind::Crossover>(engine, voice);
    build<ElementKind::Detector>(engine, voice);
    build<ElementKind::Converter>(engine, voice);
    build<ElementKind::PeakHold>(engine, voice);
    build<ElementKind::AveragingFilter>(engine, voice);
    build<ElementKind::Capacitor>(engine, voice);
    build<ElementKind::TransferCurve>(engine, voice);
    build<ElementKind::Mixer>(engine, voice);
    build<ElementKind::Operator>(engine, voice);
    build<ElementKind::Delay>(engine, voice);
    build<ElementKind::Constant>(engine, voice);
    build<ElementKind::Vca>(engine, voice);
}

template <ElementKind kind>
void ElementPool::build(DynamicsEngine& engine, ModulationMatrix::VoiceMatrix& voice) {
    const ElementGroup& group = engine.layout().group(kind);
    std::vector<Nodes> active(static_cast<std::size_t>(group.capacity));
    for (int i = 0; i < group.built; ++i) {
        active[static_cast<std::size_t>(i)] = make(ElementWiring<kind>(engine, voice, i));
    }
    engine.parameters().numActive(kind).attach(std::move(active));
}

template <ElementKind kind>
StagedControl& ElementPool::stage(List<StagedControl>& list, const ElementWiring<kind>& wiring,
                                  StagedControl::Role role, typename ElementWiring<kind>::InputName input) {
    return add(list, wiring.environment(), role, wiring.target(input), wiring.input(input));
}

void ElementPool::orderLookAhead() {
    for (const auto* controls : {&averages_, &holds_, &delayControls_, &leads_}) {
        for (const auto& control : *controls) control->follow(engine_.courseOf(control->target()));
    }
    for (std::size_t i = 0; i < delays_.size(); ++i) {
        const LookAheadCourse* course = delayControls_[i]->course();
        delays_[i]->readType = course ? DelayLine::Overlapped : DelayLine::Interpolated;
        // The old place counts until the gain has left it.
        if (course) delays_[i]->setHandover({course->fade, course->turn + course->fade});
    }
    for (std::size_t i = 0; i < vcas_.size(); ++i) {
        vcas_[i]->follow(leads_[i]->course());
        if (leads_[i]->course()) engine_.offerLead(*leads_[i]);
    }
}

ElementPool::Nodes ElementPool::make(const ElementWiring<ElementKind::Filter>& wiring) {
    FilterSet& set = add(filters_, wiring.environment());
    set.highPass.source = &wiring.input("Input");
    set.highPass.shape = AnalogFilterPrototype::HighPass;
    set.highPass.coefficientCalculation = EQFilter::Bilinear;
    set.highPass.frequency.setSource(&wiring.input("High Pass Freq"));
    set.lowPass.source = &set.highPass;
    set.lowPass.shape = AnalogFilterPrototype::LowPass;
    set.lowPass.coefficientCalculation = EQFilter::Bilinear;
    set.lowPass.frequency.setSource(&wiring.input("Low Pass Freq"));
    wiring.drive("Slope", set.highPass.slope);
    wiring.drive("Slope", set.lowPass.slope);
    wiring.switchOff("High Pass Freq", set.highPass.enabled);
    wiring.switchOff("Low Pass Freq", set.lowPass.enabled);
    wiring.setSource(set.lowPass);
    return {&set.highPass, &set.lowPass};
}

ElementPool::Nodes ElementPool::make(const ElementWiring<ElementKind::Saturator>& wiring) {
    Saturator& saturator = add(saturators_, wiring.environment());
    saturator.source = &wiring.input("Input");
    saturator.drive.setSource(&wiring.input("Drive"));
    wiring.drive("Transfer Function", saturator.transferFunction);
    wiring.setSource(saturator);
    return {&saturator};
}

ElementPool::Nodes ElementPool::make(const ElementWiring<ElementKind::Crossover>& wiring) {
    DynamicsEngine::BandSplitter& splitter =
        add(crossovers_, wiring.environment(), wiring.input("Input"), wiring.input("Frequency"));
    wiring.drive("Processing Mode", splitter.processingMode);
    wiring.drive("Filter Slope", splitter.low.slope);
    wiring.drive("Filter Slope", splitter.high.slope);
    wiring.setSource(splitter.output(0), 0);
    wiring.setSource(splitter.output(1), 1);
    return {&splitter.low, &splitter.high};
}

ElementPool::Nodes ElementPool::make(const ElementWiring<ElementKind::Detector>& wiring) {
    wave::Producer& signal = wiring.input("Input");
    DynamicsEngine::AbstractStereoLinker& linker = engine_.linker(wiring.element());
    linker.setSource(channel_, signal);
    DetectorChain& chain = add(detectors_, wiring.environment(), signal, linker.output(channel_),
                               wiring.configuration().rmsWindowLimit,
                               wiring.element() < wiring.configuration().maxOutputSmartClippers);
    chain.linkMix.mix.setSource(&wiring.input("Link"));
    chain.rms.window.setSource(&wiring.input("RMS Window"));
    chain.detector.knee.setSource(&wiring.input("Knee"));
    chain.detector.threshold.setSource(&wiring.input("Threshold"));
    chain.detector.hysteresis.setSource(&wiring.input("Hysteresis"));
    chain.detector.ratio.setSource(&wiring.input("Ratio"));
    chain.detector.limit.setSource(&wiring.input("Limit"));
    wiring.drive("Mode", chain.modeRouter.selected);
    wiring.drive("Mode", chain.output.selected);
    wiring.drive("Domain", chain.domainRouter.selected);
    wiring.drive("Domain", chain.detector.domain);
    wiring.drive("Purpose", chain.detector.purpose);
    wiring.drive("Knee Style", chain.detector.kneeStyle);
    if (chain.clipper) {
        chain.clipper->threshold.setSource(&wiring.input("Threshold"));
        wiring.drive("Domain", chain.clipper->domain);
    }
    wiring.setSource(chain.output);
    return chain.statefulNodes();
}

ElementPool::Nodes ElementPool::make(const ElementWiring<ElementKind::Converter>& wiring) {
    DBConverter& converter = add(converters_, wiring.environment());
    converter.source = &wiring.input("Input");
    wiring.drive("Conversion", converter.conversion);
    wiring.setSource(converter);
    return {&converter};
}

ElementPool::Nodes ElementPool::make(const ElementWiring<ElementKind::PeakHold>& wiring) {
    PeakHold& hold = add(peakHolds_, wiring.environment(), wiring.configuration().peakHoldLimit);
    hold.source = &wiring.input("Input");
    hold.hold.setSource(&stage(holds_, wiring, StagedControl::Hold, "Hold"));
    wiring.setSource(hold);
    return {&hold};
}

ElementPool::Nodes ElementPool::make(const ElementWiring<ElementKind::AveragingFilter>& wiring) {
    AveragingFilter& filter =
        add(averagingFilters_, wiring.environment(), wiring.configuration().averagingLimit);
    filter.source = &wiring.input("Input");
    filter.window.setSource(&stage(averages_, wiring, StagedControl::Average, "Window Size"));
    wiring.drive("Power", filter.power);
    wiring.setSource(filter);
    return {&filter};
}

ElementPool::Nodes ElementPool::make(const ElementWiring<ElementKind::Capacitor>& wiring) {
    Capacitor& capacitor = add(capacitors_, wiring.environment(), capacitorStyle_);
    capacitor.source = &wiring.input("Input");
    capacitor.attack.setSource(&wiring.input("Attack"));
    capacitor.attackCurve.setSource(&wiring.input("Attack Curve"));
    capacitor.attackSmoothing.setSource(&wiring.input("Attack Smoothing"));
    capacitor.release.setSource(&wiring.input("Release"));
    capacitor.releaseCurve.setSource(&wiring.input("Release Curve"));
    capacitor.releaseSmoothing.setSource(&wiring.input("Release Smoothing"));
    capacitor.hold.setSource(&wiring.input("Hold"));
    wiring.setSource(capacitor);
    return {&capacitor};
}

ElementPool::Nodes ElementPool::make(const ElementWiring<ElementKind::TransferCurve>& wiring) {
    TransferCurveProcessor& curve = add(transferCurves_, wiring.environment());
    curve.source = &wiring.input("Input");
    curve.strength.setSource(&wiring.input("Strength"));
    wiring.drive("Function", curve.function);
    wiring.setSource(curve);
    return {&curve};
}

ElementPool::Nodes ElementPool::make(const ElementWiring<ElementKind::Mixer>& wiring) {
    EffectMixer& mixer = add(mixers_, wiring.environment(), wiring.input("Input 1"), wiring.input("Input 2"));
    mixer.panningLaw = EffectMixer::Linear;
    mixer.mix.setSource(&wiring.input("Mix"));
    wiring.setSource(mixer);
    return {&mixer};
}

ElementPool::Nodes ElementPool::make(const ElementWiring<ElementKind::Operator>& wiring) {
    Mixer& mixer = add(operators_, wiring.environment(), 2);
    mixer.setInput(0, &wiring.input("Input 1"));
    mixer.setInput(1, &wiring.input("Input 2"));
    wiring.drive("Operation", mixer.operation);
    wiring.setSource(mixer);
    return {&mixer};
}

ElementPool::Nodes ElementPool::make(const ElementWiring<ElementKind::Delay>& wiring) {
    DelayLine& line = add(delays_, wiring.environment(), wiring.configuration().delayLimit);
    line.source = &wiring.input("Input");
    line.delay.setSource(&stage(delayControls_, wiring, StagedControl::Delay, "Delay"));
    line.delayInterpretation = DelayLine::Milliseconds;
    wiring.setSource(line);
    return {&line};
}

/// A Constant is nothing but the value of its input.
ElementPool::Nodes ElementPool::make(const ElementWiring<ElementKind::Constant>& wiring) {
    wiring.setSource(wiring.input("Value"));
    return {};
}

ElementPool::Nodes ElementPool::make(const ElementWiring<ElementKind::Vca>& wiring) {
    DynamicsEngine::VCA& vca = add(vcas_, wiring.environment(), wiring.configuration(), wiring.input("Input"),
                                   wiring.input("Gain Change"));
    vca.lookAhead.setSource(&stage(leads_, wiring, StagedControl::Lead, "Look-ahead"));
    engine_.parameters().drive(kLookAheadStagesPosition, vca.numLookAheadStages);
    wiring.drive("Look-ahead Enabled", vca.lookAheadEnabled);
    wiring.drive("Domain", vca.domain);
    wiring.drive("Num Convolvers In Gain Path", vca.numConvolvers);
    wiring.drive("Num SmartClippers In Gain Path", vca.numSmartClippers);
    wiring.setSource(vca);
    return {&vca};
}

}  // namespace vanta
