#include "limiter/processor/vanta_processor.hpp"

#include <utility>

#include "foundation/resource.hpp"
#include "limiter/latency/parameter_delays.hpp"
#include "limiter/latency/style_stages.hpp"
#include "limiter/processor/patch_routing.hpp"
#include "limiter/resources/style_resources.hpp"
#include "plugin/parameters/parameter_change_forwarder.hpp"

namespace vanta {

namespace {

/// The amount of a linker that no parameter drives.
constexpr float kFreeLinkAmount = 0.5f;

static_assert(StyleRouting{}.links.size() == limiterConfiguration().built[indexOf(ElementKind::Detector)],
              "every Detector that is built has a linker, which follows something");

}  // namespace

VantaProcessor::VantaProcessor(ChannelLayout layout, const StylePatch* patch)
    : GenericPluginProcessor(layout), VantaParameters(static_cast<GenericPluginBase&>(*this)), patch_(patch) {
    initialize();
    wave::Environment& root = environment();
    oversampledEnvironment_ = std::make_unique<wave::SubEnvironment>(root);
    oversamplingStyle_ = std::make_unique<sr::ConverterStyle>(*oversampledEnvironment_);
    baseExposerStyle_ = std::make_unique<sr::TruePeakExposer::Style>(root);
    oversampledExposerStyle_ = std::make_unique<sr::TruePeakExposer::Style>(*oversampledEnvironment_);
    buildEngine();
    levels_ = std::make_unique<LevelSignals>(*oversampledEnvironment_, *oversamplingStyle_,
                                             modulationMatrix_->globalTarget(kMainThresholdTarget));
    overshootStyle_ = std::make_unique<OvershootLimiter::Style>(root);
    buildChannels();
    buildMeters();
    listenToParameters();
    oversampledEnvironment_->sampleRateChanged.addHandler(this, &VantaProcessor::oversampledRateChanged);
    applyInitialValues();
}

VantaProcessor::~VantaProcessor() {
    environment().setDestroying();
}

void VantaProcessor::reset() {
    GenericPluginProcessor::reset();
    meters_->resetLoudness();
}

DynamicsEngineConfiguration VantaProcessor::configuration() const {
    return patch_ ? patchConfiguration() : limiterConfiguration();
}

StageCounts VantaProcessor::stagesOfStyle(LimitingStyle selected) const {
    return patch_ ? stagesOf(patch_->values) : styleStages(selected);
}

int VantaProcessor::styleIndex() const {
    return patch_ ? patchIndex_ : static_cast<int>(appliedValue(style));
}

StyleRouting VantaProcessor::routing() const {
    return patch_ ? patchRouting_ : styleRouting(applied(style));
}

void VantaProcessor::initShared() {
    addResources(styleResources());
}

void VantaProcessor::buildEngine() {
    engineLayout_ = std::make_unique<EngineLayout>(configuration());
    modulationMatrix_ = std::make_unique<ModulationMatrix>(*oversampledEnvironment_,
                                                           DynamicsEngine::modulationLayout(*engineLayout_));
    dynamicsEngine_ = std::make_unique<DynamicsEngine>(*engineLayout_, *modulationMatrix_);
    dynamicsEngine_->attach(*this);
    for (const Resource& record : styleResources()) {
        dynamicsEngine_->loadStyle(std::string(record.name));
    }
    if (patch_) {
        patchIndex_ = dynamicsEngine_->addStyle(patch_->values);
        patchRouting_ = patchRouting(*engineLayout_, patch_->values);
    }

    gain.target = dynamicsEngine_->parameterAt(kMainThresholdPosition);
    lookahead.target = dynamicsEngine_->parameterAt(kCustom1Position);
    attack.target = dynamicsEngine_->parameterAt(kMainAttackPosition);
    release.target = dynamicsEngine_->parameterAt(kMainReleasePosition);
}

void VantaProcessor::buildChannels() {
    const VantaChannelShared shared{
        *oversampledEnvironment_, *oversamplingStyle_, *baseExposerStyle_, *oversampledExposerStyle_,
        *dynamicsEngine_,         *overshootStyle_,    *levels_,           *this};
    VantaChannel* waiting = nullptr;  // what belongs to no pair is computed side by side as well
    for (const int type : channelTypes(channelLayout)) {
        vantaChannels_.push_back(std::make_unique<VantaChannel>(*this, shared));
        VantaChannel& channel = *vantaChannels_.back();
        const bool left = (type & kLeftChannel) && !(type & kRightChannel);
        // The left of a pair stands just before its right.
        if ((type & kRightChannel) && !(type & kLeftChannel)) {
            channel.linkTo(**(vantaChannels_.end() - 2));
        } else if (!left && waiting) {
            channel.linkTo(*std::exchange(waiting, nullptr));
        } else if (!left) {
            waiting = &channel;
        }
    }
}

void VantaProcessor::buildMeters() {
    meters_ = std::make_unique<VantaMeters>(environment(), vantaChannels_, *this);
    levelSources = meters_->levelSources();
    audioSources = meters_->audioSources();
}

std::unique_ptr<DynamicsEngine::AbstractStereoLinker> VantaProcessor::createStereoLinker() {
    auto linker = std::make_unique<DefaultStereoLinker>(*oversampledEnvironment_, channelLayout);
    channelLinkCenter.addTarget(linker->linkCenter);
    channelLinkLfe.addTarget(linker->linkLfe);
    stereoLinkers_.push_back(linker.get());
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
    dynamicsEngine_->applyAllParameters();
    oversampledRateChanged(nullptr);
    applyAllParameters();
    applyPending();
}

void VantaProcessor::updateLatency() {
    const auto current = [&] { return delaysOf(*this, sampleRate(), stagesOfStyle(style.mapped())).total; };
    // Several threads may each set one of the parameters: whoever stores last has seen them all.
    do {
        setLatency(current());
    } while (latency() != current());
}

void VantaProcessor::parameterAboutToChange(int index) {
    if (changesDelays(*this, index)) updateLatency();
}

void VantaProcessor::loadStyle() {
    dynamicsEngine_->applyStyle(styleIndex());
    reassertMainControls();
}

// The style has just overwritten what the knobs had set. What they are set to by now is not looked at, as
// it is still to come: then it overwrites this in turn.
void VantaProcessor::reassertMainControls() {
    const auto reassert = [this](auto&... knobs) { (knobs.forward(appliedValue(knobs)), ...); };
    reassert(gain, lookahead, attack, release);
    for (int i = 0; i < engineLayout_->group(ElementKind::Detector).capacity; ++i) {
        const int position = engineLayout_->position(ElementKind::Detector, i,
                                                     parameterIndex(ElementKind::Detector, "Stereo Link"));
        dynamicsEngine_->parameterAt(position)->setValue(1.0f, 0);
    }
}

void VantaProcessor::applyPendingParameters() {
    GenericPluginProcessor::applyPendingParameters();
    // What the first has set in the engine: nobody else sets anything there.
    dynamicsEngine_->applyPendingParameters();
}

void VantaProcessor::sampleRateChanged() {
    GenericPluginProcessor::sampleRateChanged();
    auto fresh = std::make_unique<OvershootLimiter::Style>(environment());
    for (auto& channel : vantaChannels_) channel->replaceOvershootKernel(*fresh);
    overshootStyle_ = std::move(fresh);
}

void VantaProcessor::oversampledRateChanged(void*) {
    const SignalPathLimits limits(environment().sampleRate(), oversampledEnvironment_->factor(),
                                  mostStages(configuration()));
    for (auto& channel : vantaChannels_) channel->setDelayLimits(limits);
    levels_->setDelayLimits(limits);
    updateLatency();
    updateDelays();
}

void VantaProcessor::updateDelays() {
    const SignalPathDelays now(environment().sampleRate(), oversampledEnvironment_->factor(),
                               applied(truePeakLimiting), stagesOfStyle(applied(style)));
    for (auto& channel : vantaChannels_) channel->setDelays(now, routing(), styleIndex());
    levels_->setDelays(now);
    meters_->setPathDelay(now.total);
}

void VantaProcessor::ditheringChanged(void*) {
    const int bits = ditherBits(static_cast<int>(appliedValue(dithering)));
    for (auto& channel : vantaChannels_) channel->setDitherBits(bits);
}

void VantaProcessor::oversamplingChanged(void*) {
    oversampledEnvironment_->setFactor(1 << static_cast<int>(appliedValue(oversampling)));
    meters_->resetPeaks();
    updateOvershootMode();
}

void VantaProcessor::styleChanged(void*) {
    loadStyle();
    const StyleRouting now = routing();
    for (auto& channel : vantaChannels_) channel->setTap(now.tappedConvolver);
    assignLinkers(now);
    restart();
}

void VantaProcessor::assignLinkers(const StyleRouting& links) {
    channelLinkTransients.clearTargets();
    channelLinkRelease.clearTargets();
    for (std::size_t i = 0; i < stereoLinkers_.size(); ++i) {
        switch (links.linkOf(i)) {
            case StyleRouting::Link::Transients:
                channelLinkTransients.addTarget(stereoLinkers_[i]->amount);
                break;
            case StyleRouting::Link::Release:
                channelLinkRelease.addTarget(stereoLinkers_[i]->amount);
                break;
            case StyleRouting::Link::Free:
                stereoLinkers_[i]->amount.setValue(kFreeLinkAmount, -1.0f);
        }
    }
    channelLinkTransients.applyValue(appliedValue(channelLinkTransients));
    channelLinkRelease.applyValue(appliedValue(channelLinkRelease));
}

void VantaProcessor::truePeakChanged(void*) {
    updateOvershootMode();
    restart();
}

// Another path: what the old one remembers of the signal has no place in it.
void VantaProcessor::restart() {
    updateLatency();
    updateDelays();
    environment().resetGraph(wave::ResetMode::ResetActive);
    meters_->resetPeaks();
}

void VantaProcessor::sideChainChanged(void*) {
    updateDelays();
}

void VantaProcessor::updateOvershootMode() {
    const bool direct = !applied(truePeakLimiting) && oversampledEnvironment_->factor() < 2;
    for (auto& channel : vantaChannels_) {
        channel->setOvershootMode(direct ? OvershootLimiter::Hard : OvershootLimiter::Smooth);
    }
}

void VantaProcessor::meterScaleChanged(void*) {
    meters_->setScale(applied(meterScale));
}

void VantaProcessor::levelsChanged(void*) {
    const float ceilingDb = appliedValue(outputLevel);
    const float targetDb = applied(unityGain) ? -appliedValue(gain) : ceilingDb;
    levels_->setOutputLevel(ceilingDb);
    levels_->setUnityGain(applied(unityGain));
    for (auto& channel : vantaChannels_) channel->setLevels(ceilingDb, targetDb);
}

}  // namespace vanta
