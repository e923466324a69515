#include "limiter/vanta_processor.hpp"

#include "foundation/resource.hpp"
#include "limiter/engine/engine_inputs.hpp"
#include "limiter/engine/engine_parameters.hpp"
#include "limiter/styles/style_resources.hpp"
#include "plugin/parameters/parameter_change_forwarder.hpp"

namespace vanta {

namespace {

constexpr const char* kStyleNames[] = {"transparent.limiter", "punchy.limiter",     "dynamic.limiter",
                                       "allround.limiter",    "aggressive.limiter", "modern.limiter",
                                       "bus.limiter",         "safe.limiter"};

constexpr float kMakeupRangeDb = 30.0f;
/// The makeup stays this much below the ceiling, so that rounding on the way does not reach it.
constexpr float kMakeupMarginDb = 0.001f;
/// The amount of a linker that no parameter drives.
constexpr float kFreeLinkAmount = 0.5f;
constexpr int kAllParameters = -1;

}  // namespace

VantaProcessor::VantaProcessor(ChannelLayout layout)
    : GenericPluginProcessor(layout), VantaParameters(static_cast<GenericPluginBase&>(*this)) {
    initialize();
    wave::Environment& root = environment();
    oversampledEnvironment = std::make_unique<wave::SubEnvironment>(root);
    oversamplingStyle = std::make_unique<sr::ConverterStyle>(*oversampledEnvironment);
    baseExposerStyle = std::make_unique<sr::TruePeakExposer::Style>(root);
    oversampledExposerStyle = std::make_unique<sr::TruePeakExposer::Style>(*oversampledEnvironment);
    buildEngine();
    buildMakeup();
    overshootStyle = std::make_unique<OvershootLimiter::Style>(root);
    buildChannels();
    buildMeters();
    listenToParameters();
    oversampledEnvironment->sampleRateChanged.addHandler(this, &VantaProcessor::oversampledRateChanged);
    applyInitialValues();
}

VantaProcessor::~VantaProcessor() {
    environment().setDestroying();
}

void VantaProcessor::initShared() {
    addResources(styleResources());
}

void VantaProcessor::buildEngine() {
    engineLayout = std::make_unique<EngineLayout>(limiterConfiguration());
    modulationMatrix = std::make_unique<ModulationMatrix>(*oversampledEnvironment,
                                                          DynamicsEngine::modulationLayout(*engineLayout));
    dynamicsEngine = std::make_unique<DynamicsEngine>(*engineLayout, *modulationMatrix);
    dynamicsEngine->attach(*this);
    for (const char* name : kStyleNames) dynamicsEngine->loadStyle(name);

    gain.target = dynamicsEngine->parameterAt(kMainThresholdPosition);
    lookahead.target = dynamicsEngine->parameterAt(kCustom1Position);
    attack.target = dynamicsEngine->parameterAt(kMainAttackPosition);
    release.target = dynamicsEngine->parameterAt(kMainReleasePosition);
}

void VantaProcessor::buildMakeup() {
    wave::Environment& oversampled = *oversampledEnvironment;
    makeupLevel = std::make_unique<FloatParameterSource>(oversampled, 0.0f);
    makeupLevel->parameter().setRange(-kMakeupRangeDb - kMakeupMarginDb, kMakeupRangeDb);
    makeupSum = std::make_unique<StaticMixer>(oversampled);
    makeupSum->addInput(1.0f, makeupLevel.get());
    makeupSum->addInput(-1.0f, &modulationMatrix->globalTarget(0));
    makeupConverter = std::make_unique<DBConverter>(oversampled);
    makeupConverter->source = makeupSum.get();
    makeupConverter->conversion = DBConverter::DbToAmplitude;
    makeupDelay = std::make_unique<wave::DelayFilter>(oversampled);
    makeupDelay->source = makeupConverter.get();

    // The ceiling moves as the makeup does: it never meets audio of another level.
    ceilingConverter = std::make_unique<DBConverter>(oversampled);
    ceilingConverter->source = makeupLevel.get();
    ceilingConverter->conversion = DBConverter::DbToAmplitude;
    ceilingDelay = std::make_unique<wave::DelayFilter>(oversampled, 1.0f);
    ceilingDelay->source = ceilingConverter.get();
}

void VantaProcessor::buildChannels() {
    const VantaChannelShared shared{*oversampledEnvironment,
                                    *oversamplingStyle,
                                    *baseExposerStyle,
                                    *oversampledExposerStyle,
                                    *dynamicsEngine,
                                    *overshootStyle,
                                    *makeupDelay,
                                    *ceilingDelay,
                                    *this};
    for (const int type : channelTypes(channelLayout)) {
        vantaChannels.push_back(std::make_unique<VantaChannel>(*this, shared));
        // The left of a pair stands just before its right.
        if ((type & kRightChannel) && !(type & kLeftChannel)) {
            vantaChannels.back()->linkTo(**(vantaChannels.end() - 2));
        }
    }
}

// Level sources: the loudness of the programme on its three time scales, then three of each channel.
void VantaProcessor::buildMeters() {
    loudnessMeter_ = std::make_unique<LoudnessMeter>(environment());
    audioBuffer_ = std::make_unique<RealTimeAudioBuffer>(environment(), channelCount(channelLayout));
    loudnessRecording.addTarget(loudnessMeter_->enabled);
    for (int i = 0; i < LoudnessMeter::SourceCount; ++i) {
        levelSources.push_back(&loudnessMeter_->source(static_cast<LoudnessMeter::SourceIndex>(i)));
    }
    for (int list = 0; list < RealTimeAudioBuffer::kListCount; ++list) {
        audioSources.push_back(&audioBuffer_->measurement(list));
    }
    for (auto& channel : vantaChannels) {
        channelMeters.push_back(std::make_unique<ChannelMeters>(*channel, *loudnessMeter_, *this));
        ChannelMeters& meters = *channelMeters.back();
        levelSources.push_back(&meters.outputPeak());
        levelSources.push_back(&meters.rmsOrLoudness());
        levelSources.push_back(&meters.gain());
        audioBuffer_->measurement(0).setInput(channel->index(), channel->drySignal());
        audioBuffer_->measurement(1).setInput(channel->index(), channel->signalBeforeDither());
        audioBuffer_->measurement(2).setInput(channel->index(), channel->totalGain());
    }
}

std::unique_ptr<DynamicsEngine::AbstractStereoLinker> VantaProcessor::createStereoLinker() {
    auto linker = std::make_unique<DefaultStereoLinker>(*oversampledEnvironment, channelLayout);
    channelLinkCenter.addTarget(linker->linkCenter);
    channelLinkLfe.addTarget(linker->linkLfe);
    stereoLinkers.push_back(linker.get());
    return linker;
}

void VantaProcessor::listenToParameters() {
    const auto listen = [this](auto method, auto&... heard) {
        auto& forwarder = ParameterChangeForwarder::add(forwarderList(), this, method);
        (forwarder.listenTo(heard), ...);
    };
    listen(&VantaProcessor::ditheringChanged, dithering);
    listen(&VantaProcessor::oversamplingChanged, oversampling);
    listen(&VantaProcessor::styleChanged, style);
    listen(&VantaProcessor::truePeakChanged, truePeakLimiting);
    listen(&VantaProcessor::sideChainChanged, sideChainTriggering);
    listen(&VantaProcessor::meterScaleChanged, meterScale);
    listen(&VantaProcessor::levelsChanged, gain, outputLevel, unityGain);
}

void VantaProcessor::applyInitialValues() {
    loadStyle();
    dynamicsEngine->applyAllParameters();
    oversampledRateChanged(nullptr);
    applyAllParameters();
    applyPending();
}

SignalPathDelays VantaProcessor::delays() const {
    return {sampleRate(), 1 << oversampling.currentIndex(), truePeakLimiting.mapped(),
            stageCounts(style.mapped())};
}

// From the style's own values, which never change: the latency must be known before a style has arrived.
StageCounts VantaProcessor::stageCounts(LimitingStyle of) const {
    const auto values = dynamicsEngine->styleValues(static_cast<int>(of));
    const auto count = [&](int position) {
        return static_cast<int>(values[static_cast<std::size_t>(position)]);
    };
    return {count(kLookAheadStagesPosition), count(kOutputConvolversPosition),
            count(kOutputSmartClippersPosition)};
}

void VantaProcessor::updateLatency() {
    setLatency(delays().total);
}

void VantaProcessor::parameterAboutToChange(int index) {
    const bool all = index == kAllParameters;
    if (all || index == style.index()) loadStyle();
    if (all || index == style.index() || index == oversampling.index() || index == truePeakLimiting.index()) {
        updateLatency();
    }
}

void VantaProcessor::loadStyle() {
    dynamicsEngine->applyStyle(style.currentIndex());
    reassertMainControls();
}

// The style has just overwritten what the knobs had set.
void VantaProcessor::reassertMainControls() {
    for (FloatPluginParameter* knob :
         {static_cast<FloatPluginParameter*>(&gain), static_cast<FloatPluginParameter*>(&lookahead),
          static_cast<FloatPluginParameter*>(&attack), static_cast<FloatPluginParameter*>(&release)}) {
        knob->setValue(knob->value(), 0);
    }
    for (int i = 0; i < engineLayout->group(ElementKind::Detector).capacity; ++i) {
        const int position = engineLayout->position(ElementKind::Detector, i, kDetectorStereoLink);
        dynamicsEngine->parameterAt(position)->setValue(1.0f, 0);
    }
}

void VantaProcessor::notePendingChanges() {
    GenericPluginProcessor::notePendingChanges();
    dynamicsEngine->notePendingChanges();
}

void VantaProcessor::applyPendingParameters() {
    GenericPluginProcessor::applyPendingParameters();
    dynamicsEngine->applyPendingParameters();
}

void VantaProcessor::sampleRateChanged() {
    GenericPluginProcessor::sampleRateChanged();
    auto fresh = std::make_unique<OvershootLimiter::Style>(environment());
    for (auto& channel : vantaChannels) channel->replaceOvershootKernel(*fresh);
    overshootStyle = std::move(fresh);
}

void VantaProcessor::oversampledRateChanged(void*) {
    const SignalPathLimits limits(environment().sampleRate(), oversampledEnvironment->factor());
    for (auto& channel : vantaChannels) channel->setDelayLimits(limits);
    makeupDelay->setMaxDelay(limits.engine);
    ceilingDelay->setMaxDelay(limits.engine);
    updateLatency();
    updateDelays();
}

void VantaProcessor::updateDelays() {
    const LimitingStyle current = applied(style);
    const SignalPathDelays now(environment().sampleRate(), oversampledEnvironment->factor(),
                               applied(truePeakLimiting), stageCounts(current));
    for (auto& channel : vantaChannels) channel->setDelays(now, current);
    makeupDelay->setDelay(now.engine);
    ceilingDelay->setDelay(now.engine);
}

void VantaProcessor::ditheringChanged(void*) {
    const int index = static_cast<int>(appliedValue(dithering));
    for (auto& channel : vantaChannels) channel->setDitherBits(index == 0 ? 0 : 2 * index + 14);
}

void VantaProcessor::oversamplingChanged(void*) {
    oversampledEnvironment->setFactor(1 << static_cast<int>(appliedValue(oversampling)));
    resetMeters();
    updateOvershootMode();
}

void VantaProcessor::styleChanged(void*) {
    const LimitingStyle current = applied(style);
    for (auto& channel : vantaChannels) channel->setStyle(current);
    assignLinkers(current);
    updateLatency();
    updateDelays();
    environment().resetGraph(wave::ResetMode::ResetActive);
    resetMeters();
}

// The detectors of the look-ahead stage follow one link, those of the release stage the other.
void VantaProcessor::assignLinkers(LimitingStyle current) {
    channelLinkTransients.clearTargets();
    channelLinkRelease.clearTargets();
    channelLinkTransients.addTarget(stereoLinkers[0]->amount);
    channelLinkRelease.addTarget(stereoLinkers[1]->amount);
    auto& third = current == LimitingStyle::Dynamic ? channelLinkTransients : channelLinkRelease;
    third.addTarget(stereoLinkers[2]->amount);
    if (current == LimitingStyle::Modern) {
        channelLinkRelease.addTarget(stereoLinkers[3]->amount);
    } else {
        stereoLinkers[3]->amount = kFreeLinkAmount;
    }
    channelLinkTransients.applyValue(appliedValue(channelLinkTransients));
    channelLinkRelease.applyValue(appliedValue(channelLinkRelease));
}

void VantaProcessor::truePeakChanged(void*) {
    updateOvershootMode();
    updateLatency();
    updateDelays();
    environment().resetGraph(wave::ResetMode::ResetActive);
    resetMeters();
}

void VantaProcessor::sideChainChanged(void*) {
    updateDelays();
}

void VantaProcessor::updateOvershootMode() {
    const bool direct = !applied(truePeakLimiting) && oversampledEnvironment->factor() < 2;
    for (auto& channel : vantaChannels) {
        channel->setOvershootMode(direct ? OvershootLimiter::Hard : OvershootLimiter::Smooth);
    }
}

void VantaProcessor::resetMeters() {
    for (auto& meters : channelMeters) meters->resetPeaks();
}

void VantaProcessor::meterScaleChanged(void*) {
    for (auto& meters : channelMeters) meters->setScale(applied(meterScale));
}

void VantaProcessor::levelsChanged(void*) {
    const float ceilingDb = appliedValue(outputLevel);
    const float targetDb = applied(unityGain) ? -appliedValue(gain) : ceilingDb;
    makeupLevel->assign(ceilingDb - kMakeupMarginDb, this);
    for (auto& channel : vantaChannels) channel->setLevels(ceilingDb, targetDb);
}

}  // namespace vanta
