#include "limiter/vanta_channel.hpp"

#include <algorithm>
#include <cmath>

#include "foundation/numbers.hpp"
#include "limiter/engine/engine_inputs.hpp"
#include "limiter/engine/engine_parameters.hpp"

namespace vanta {

namespace {

using LimitingStyle = VantaParameters::LimitingStyle;

/// Corner of the DC filters, in log2 of hertz: 1.5 Hz.
const float kDcCorner = std::log2(1.5f);
/// The Unity Gain trim reaches 30 dB up.
constexpr double kMaxTrimDb = 30.0;
constexpr float kLowestDitherCeilingDb = -60.0f;

constexpr int kMain = 0;
constexpr int kSide = 1;

bool hasTwoStages(LimitingStyle style) {
    return style == LimitingStyle::Dynamic || style == LimitingStyle::Modern;
}

/// The VCAs of a style with two stages, in the order of the signal.
struct StageOrder {
    int first;
    int second;
};
StageOrder stageOrder(LimitingStyle style) {
    return style == LimitingStyle::Dynamic ? StageOrder{1, 0} : StageOrder{0, 1};
}

}  // namespace

VantaChannel::VantaChannel(GenericPluginProcessor& owner, const VantaChannelShared& shared)
    : Channel(owner),
      engine(shared.engine),
      oversampled(shared.oversampled),
      dcFilters{EQFilter(owner.environment()), EQFilter(owner.environment())},
      upsamplers{sr::InterpolatorFilter(shared.oversampled, shared.oversampling),
                 sr::InterpolatorFilter(shared.oversampled, shared.oversampling)},
      detectionRouter(shared.oversampled, 2),
      dryDelay(shared.oversampled),
      sideChainVolume(shared.oversampled),
      detectionPeaks(shared.oversampled, shared.oversampledExposer),
      detectionDelay(shared.oversampled),
      processor_(shared.engine, index(), detectionDelay),
      makeupVolumes{VolumeFilter(shared.oversampled), VolumeFilter(shared.oversampled)},
      padDelays{wave::DelayFilter(shared.oversampled), wave::DelayFilter(shared.oversampled)},
      dryPadDelay(shared.oversampled),
      downsamplers{sr::DecimatorFilter(shared.oversampling), sr::DecimatorFilter(shared.oversampling)},
      outputRouter(owner.environment(), 2),
      overshootPeaks(owner.environment(), shared.baseExposer),
      overshootLimiter(owner.environment(), shared.overshoot),
      overshootDelay(owner.environment()),
      limitedVolume(owner.environment()),
      outputPeaks(owner.environment(), shared.baseExposer),
      outputVolume(owner.environment()),
      dryDecimator(shared.oversampling, sr::SkipDecimator::First),
      gainDecimator(shared.oversampling, sr::SkipDecimator::Smallest),
      stageDelay(shared.oversampled, 1.0f),
      gainMixer(shared.oversampled, 2),
      gainDelay(owner.environment(), 1.0f),
      totalGain_(owner.environment(), 2),
      dryOutDelay(owner.environment()),
      unityLevel(owner.environment(), 1.0f),
      residualGain(owner.environment()),
      auditionVolume(owner.environment()),
      auditionRouter(owner.environment(), 2),
      dither(owner.environment()) {
    wireDetection(shared);
    wireOutput(shared);
    wireDryPath(shared);
    bind(shared.parameters);
    output = &dither;
}

void VantaChannel::wireDetection(const VantaChannelShared&) {
    dcFilters[kMain].source = &mainInput();
    dcFilters[kSide].source = &sideInput();
    for (int i : {kMain, kSide}) {
        dcFilters[i].slope = EQFilter::Order1;
        dcFilters[i].shape = AnalogFilterPrototype::HighPass;
        dcFilters[i].coefficientCalculation = EQFilter::Bilinear;
        dcFilters[i].frequency.parameter().setValue(kDcCorner, 0.0f);
        upsamplers[i].source = &dcFilters[i];
        detectionRouter.setInput(i, upsamplers[i]);
    }
    dryDelay.source = &upsamplers[kMain];
    detectionPeaks.source = &detectionRouter;
    detectionDelay.source = &detectionRouter;
    processor_.setTrigger(detectionPeaks);
}

void VantaChannel::wireOutput(const VantaChannelShared& shared) {
    sideChainVolume.source = &dryDelay;
    makeupVolumes[kMain].source = &processor_;
    makeupVolumes[kSide].source = &sideChainVolume;
    for (int i : {kMain, kSide}) {
        makeupVolumes[i].gain.setSource(&shared.makeup);
        padDelays[i].source = &makeupVolumes[i];
        downsamplers[i].source = &padDelays[i];
        outputRouter.setInput(i, downsamplers[i]);
    }
    overshootPeaks.source = &downsamplers[kMain];
    overshootLimiter.source = &overshootPeaks;
    overshootLimiter.movingCeiling = &shared.ceiling;
    overshootDelay.source = &outputRouter;
    limitedVolume.source = &overshootDelay;
    limitedVolume.gain.setSource(&overshootLimiter);
    outputPeaks.source = &limitedVolume;
    outputVolume.source = &limitedVolume;
    outputVolume.gain.parameter().setRange(0.0f, static_cast<float>(gainFromDb(kMaxTrimDb)));
    auditionRouter.setInput(0, outputVolume);
    auditionRouter.setInput(1, auditionVolume);
    dither.source = &auditionRouter;
}

void VantaChannel::wireDryPath(const VantaChannelShared&) {
    gainMixer.operation = Mixer::Multiply;
    gainMixer.setInput(0, &stageDelay);
    // Padded as the limited signal is, or the two would be a part of a sample apart.
    dryPadDelay.source = &dryDelay;
    dryDecimator.source = &dryPadDelay;
    gainDelay.source = &gainDecimator;
    totalGain_.operation = Mixer::Multiply;
    totalGain_.setInput(0, &gainDelay);
    totalGain_.setInput(1, &overshootLimiter);
    dryOutDelay.source = &dryDecimator;
    residualGain.addInput(1.0f, &unityLevel);
    residualGain.addInput(-1.0f, &totalGain_);
    // Always filled, so that what is switched to the dry path finds signal there and not a gap.
    dryOutDelay.setScheduled(wave::Environment::kBackGroup);
    auditionVolume.source = &dryOutDelay;
    auditionVolume.gain.setSource(&residualGain);
}

void VantaChannel::bind(VantaParameters& parameters) {
    parameters.truePeakLimiting.addTarget(detectionPeaks.enabled);
    parameters.truePeakLimiting.addTarget(overshootPeaks.enabled);
    parameters.truePeakMetering.addTarget(outputPeaks.enabled);
    parameters.noiseShaping.addTarget(dither.noiseShaping);
    for (EQFilter& filter : dcFilters) parameters.filterDcOffset.addTarget(filter.enabled);
    parameters.sideChainTriggering.addTarget(detectionRouter.selected);
    parameters.sideChainTriggering.addTarget(outputRouter.selected);
    parameters.auditionLimiting.addTarget(auditionRouter.selected);
}

void VantaChannel::setDelayLimits(const SignalPathLimits& limits) {
    detectionDelay.setMaxDelay(limits.truePeak);
    dryDelay.setMaxDelay(limits.truePeak + limits.engine);
    overshootDelay.setMaxDelay(limits.overshoot);
    stageDelay.setMaxDelay(limits.engine);
    dryOutDelay.setMaxDelay(limits.meter);
    gainDelay.setMaxDelay(limits.meter);
    for (wave::DelayFilter& delay : padDelays) delay.setMaxDelay(limits.pad);
    dryPadDelay.setMaxDelay(limits.pad);
}

void VantaChannel::setDelays(const SignalPathDelays& delays, LimitingStyle style) {
    detectionDelay.setDelay(delays.truePeak);
    overshootDelay.setDelay(delays.overshoot);
    dryOutDelay.setDelay(delays.meter);
    gainDelay.setDelay(delays.meter);
    dryDelay.setDelay(delays.engine + delays.truePeak);
    for (wave::DelayFilter& delay : padDelays) delay.setDelay(delays.pad);
    dryPadDelay.setDelay(delays.pad);
    prepareSwitch(delays);
    routeGain(style);
}

// For the next switch to or from the side chain. Converters that rest fill first. And the engine gets the
// side chain only when it is no longer heard, and is heard again only when the last of the side chain has
// left it.
void VantaChannel::prepareSwitch(const SignalPathDelays& delays) {
    const bool toSide = outputRouter.selected == kMain;
    const int fade = samplesInMs(double{outputRouter.fadeTime}, oversampled.parent().sampleRate());
    detectionRouter.warmUpSamples = toSide ? (delays.converters + fade) * oversampled.factor() : 0;
    outputRouter.warmUpSamples = toSide ? delays.converters : delays.total + fade;
}

// The audio delay of a VCA as the style has it: the VCA itself may not have taken it up yet.
int VantaChannel::audioDelayOf(int vca, LimitingStyle style) const {
    const auto values = engine.styleValues(static_cast<int>(style));
    const auto value = [&](int parameter) {
        const int position = engine.layout().position(ElementKind::Vca, vca, parameter);
        return static_cast<int>(values[static_cast<std::size_t>(position)]);
    };
    const double rate = engine.environment().sampleRate();
    return value(kVcaConvolvers) * kConvolverSamples +
           samplesInSeconds(kSmartClipperSeconds, rate) * value(kVcaSmartClippers) +
           samplesInSeconds(kLookAheadSeconds, rate);
}

void VantaChannel::routeGain(LimitingStyle style) {
    wave::Producer* gain = &processor_.vcaGain(0);
    if (hasTwoStages(style)) {
        const StageOrder order = stageOrder(style);
        stageDelay.source = &processor_.vcaGain(order.first);
        stageDelay.setDelay(audioDelayOf(order.second, style));
        gainMixer.setInput(1, &processor_.vcaGain(order.second));
        gain = &gainMixer;
    }
    gainDecimator.source = gain;
    sideChainVolume.gain.setSource(gain);
}

void VantaChannel::setLevels(float outputLevelDb, float targetDb) {
    overshootLimiter.ceiling = outputLevelDb;
    outputVolume.gain.assign(static_cast<float>(gainFromDb(targetDb - outputLevelDb)), this);
    dither.ceiling = std::clamp(targetDb, kLowestDitherCeilingDb, 0.0f);
}

// Aggressive takes its clipper's output past the smoothing, with the same delay.
void VantaChannel::setStyle(LimitingStyle style) {
    constexpr int kSecondConvolver = 1;
    processor_.setTap(style == LimitingStyle::Aggressive ? kSecondConvolver : -1);
}

}  // namespace vanta
