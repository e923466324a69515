#include "limiter/processor/vanta_channel.hpp"

#include <algorithm>
#include <cmath>

#include "foundation/numbers.hpp"

namespace vanta {

namespace {

/// Corner of the DC filters, in log2 of hertz: 1.5 Hz.
const float kDcCorner = std::log2(1.5f);
constexpr float kLowestDitherCeilingDb = -60.0f;

constexpr int kMain = 0;
constexpr int kSide = 1;

}  // namespace

VantaChannel::VantaChannel(GenericPluginProcessor& owner, const VantaChannelShared& shared)
    : Channel(owner),
      engine_(shared.engine),
      oversampled_(shared.oversampled),
      dcFilters_{EQFilter(owner.environment()), EQFilter(owner.environment())},
      upsamplers_{sr::InterpolatorFilter(shared.oversampled, shared.oversampling),
                  sr::InterpolatorFilter(shared.oversampled, shared.oversampling)},
      detectionRouter_(shared.oversampled, 2),
      dryDelay_(shared.oversampled),
      sideChainVolume_(shared.oversampled),
      detectionPeaks_(shared.oversampled, shared.oversampledExposer),
      detectionDelay_(shared.oversampled),
      processor_(shared.engine, index(), detectionDelay_),
      makeupVolumes_{wave::VolumeFilter(shared.oversampled), wave::VolumeFilter(shared.oversampled)},
      padDelays_{wave::DelayFilter(shared.oversampled), wave::DelayFilter(shared.oversampled)},
      dryPadDelay_(shared.oversampled),
      gainPadDelay_(shared.oversampled, 1.0f),
      downsamplers_{sr::DecimatorFilter(shared.oversampling), sr::DecimatorFilter(shared.oversampling)},
      outputRouter_(owner.environment(), 2),
      overshootPeaks_(owner.environment(), shared.baseExposer),
      overshootLimiter_(owner.environment(), shared.overshoot),
      overshootDelay_(owner.environment()),
      limitedVolume_(owner.environment()),
      outputPeaks_(owner.environment(), shared.baseExposer),
      outputVolume_(owner.environment()),
      dryDecimator_(shared.oversampling, sr::SkipDecimator::First),
      gainDecimator_(shared.oversampling, sr::SkipDecimator::Smallest),
      stageDelay_(shared.oversampled, 1.0f),
      gainMixer_(shared.oversampled, 2),
      gainDelay_(owner.environment(), 1.0f),
      totalGain_(owner.environment(), 2),
      dryOutDelay_(owner.environment()),
      unityLevel_(owner.environment(), 1.0f),
      residualGain_(owner.environment()),
      auditionVolume_(owner.environment()),
      auditionRouter_(owner.environment(), 2),
      dither_(owner.environment()) {
    wireInputs();
    wireOutput(shared);
    wireOvershootStage(shared);
    wireGain();
    wireAudition();
    bind(shared.parameters);
    output = &dither_;
}

void VantaChannel::wireInputs() {
    dcFilters_[kMain].source = &mainInput();
    dcFilters_[kSide].source = &sideInput();
    for (int i : {kMain, kSide}) {
        dcFilters_[i].slope = EQFilter::Order1;
        dcFilters_[i].shape = AnalogFilterPrototype::HighPass;
        dcFilters_[i].coefficientCalculation = EQFilter::Bilinear;
        dcFilters_[i].frequency.parameter().setValue(kDcCorner, 0.0f);
        upsamplers_[i].source = &dcFilters_[i];
        detectionRouter_.setInput(i, upsamplers_[i]);
    }
    dryDelay_.source = &upsamplers_[kMain];
    detectionPeaks_.source = &detectionRouter_;
    detectionDelay_.source = &detectionRouter_;
    processor_.setTrigger(detectionPeaks_);
}

void VantaChannel::wireOutput(const VantaChannelShared& shared) {
    sideChainVolume_.source = &dryDelay_;
    makeupVolumes_[kMain].source = &processor_;
    makeupVolumes_[kSide].source = &sideChainVolume_;
    for (int i : {kMain, kSide}) {
        makeupVolumes_[i].gain.setSource(&shared.levels.makeup());
        padDelays_[i].source = &makeupVolumes_[i];
        downsamplers_[i].source = &padDelays_[i];
        outputRouter_.setInput(i, downsamplers_[i]);
    }
}

void VantaChannel::wireOvershootStage(const VantaChannelShared& shared) {
    overshootPeaks_.source = &downsamplers_[kMain];
    overshootPeaks_.floor = &shared.levels.ceiling();
    overshootPeaks_.makeGate();
    overshootLimiter_.source = &overshootPeaks_;
    overshootLimiter_.movingCeiling = &shared.levels.ceiling();
    overshootDelay_.source = &outputRouter_;
    limitedVolume_.source = &overshootDelay_;
    limitedVolume_.gain.setSource(&overshootLimiter_);
    outputPeaks_.source = &limitedVolume_;
    outputPeaks_.detail = sr::TruePeakExposer::Highest;
    outputVolume_.source = &limitedVolume_;
    outputVolume_.gain.setSource(&shared.levels.trim());
    dither_.movingCeiling = &shared.levels.target();
}

void VantaChannel::wireGain() {
    gainMixer_.operation = Mixer::Multiply;
    gainMixer_.setInput(0, &stageDelay_);
    gainDecimator_.source = &gainPadDelay_;
    gainDelay_.source = &gainDecimator_;
    totalGain_.operation = Mixer::Multiply;
    totalGain_.setInput(0, &gainDelay_);
    totalGain_.setInput(1, &overshootLimiter_);
}

void VantaChannel::wireAudition() {
    // Padded as the limited signal is, or the two would be a part of a sample apart.
    dryPadDelay_.source = &dryDelay_;
    dryDecimator_.source = &dryPadDelay_;
    dryOutDelay_.source = &dryDecimator_;
    // Always filled, so that what is switched to the dry path finds signal there and not a gap.
    dryOutDelay_.setScheduled(wave::Environment::kBackGroup);
    residualGain_.addInput(1.0f, &unityLevel_);
    residualGain_.addInput(-1.0f, &totalGain_);
    auditionVolume_.source = &dryOutDelay_;
    auditionVolume_.gain.setSource(&residualGain_);
    auditionRouter_.setInput(0, outputVolume_);
    auditionRouter_.setInput(1, auditionVolume_);
    dither_.source = &auditionRouter_;
}

void VantaChannel::bind(VantaParameters& parameters) {
    parameters.truePeakLimiting.addTarget(detectionPeaks_.enabled);
    parameters.truePeakLimiting.addTarget(overshootPeaks_.enabled);
    parameters.truePeakMetering.addTarget(outputPeaks_.enabled);
    parameters.noiseShaping.addTarget(dither_.noiseShaping);
    for (EQFilter& filter : dcFilters_) parameters.filterDcOffset.addTarget(filter.enabled);
    parameters.sideChainTriggering.addTarget(detectionRouter_.selected);
    parameters.sideChainTriggering.addTarget(outputRouter_.selected);
    parameters.auditionLimiting.addTarget(auditionRouter_.selected);
}

void VantaChannel::setDelayLimits(const SignalPathLimits& limits) {
    detectionDelay_.setMaxDelay(limits.truePeak);
    dryDelay_.setMaxDelay(limits.truePeak + limits.engine);
    overshootDelay_.setMaxDelay(limits.overshoot);
    stageDelay_.setMaxDelay(limits.engine);
    dryOutDelay_.setMaxDelay(limits.meter);
    gainDelay_.setMaxDelay(limits.meter);
    for (wave::DelayFilter& delay : padDelays_) delay.setMaxDelay(limits.pad);
    dryPadDelay_.setMaxDelay(limits.pad);
    gainPadDelay_.setMaxDelay(limits.pad + wave::SubEnvironment::kMaxFactor / 2);
}

void VantaChannel::setDelays(const SignalPathDelays& delays, const StyleRouting& routing, int style) {
    detectionDelay_.setDelay(delays.truePeak);
    overshootDelay_.setDelay(delays.overshoot);
    dryOutDelay_.setDelay(delays.meter);
    gainDelay_.setDelay(delays.meter);
    dryDelay_.setDelay(delays.engine + delays.truePeak);
    for (wave::DelayFilter& delay : padDelays_) delay.setDelay(delays.pad);
    dryPadDelay_.setDelay(delays.pad);
    // Of each group of samples the smallest gain is taken: the group stands around its dry sample.
    gainPadDelay_.setDelay(delays.pad + oversampled_.factor() / 2);
    // The converters ring for half their length after the first sample has come through.
    outputPeaks_.warmUpSamples = delays.total + delays.converters;
    prepareSwitch(delays);
    routeGain(routing, style);
}

// For the next switch to or from the side chain. Converters that rest fill first. And the engine gets the
// side chain only when it is no longer heard, and is heard again only when the last of the side chain has
// left it.
void VantaChannel::prepareSwitch(const SignalPathDelays& delays) {
    const bool toSide = outputRouter_.selected == kMain;
    const int fade = samplesInMs(double{outputRouter_.fadeTime}, oversampled_.parent().sampleRate());
    detectionRouter_.warmUpSamples = toSide ? (delays.converters + fade) * oversampled_.factor() : 0;
    outputRouter_.warmUpSamples = toSide ? delays.converters : delays.total + fade;
}

// The audio delay of a VCA as the style has it: the VCA itself may not have taken it up yet.
int VantaChannel::audioDelayOf(int vca, int style) const {
    constexpr ElementKind kind = ElementKind::Vca;
    const auto value = [&](int parameter) {
        return engine_.styleValues(style).integerAt(engine_.layout().position(kind, vca, parameter));
    };
    return stageDelay(engine_.environment().sampleRate(),
                      {1, value(parameterIndex(kind, "Num Convolvers In Gain Path")),
                       value(parameterIndex(kind, "Num SmartClippers In Gain Path"))});
}

void VantaChannel::routeGain(const StyleRouting& routing, int style) {
    wave::Producer* gain = &processor_.vcaGain(routing.firstVca);
    if (routing.secondVca >= 0) {
        stageDelay_.source = gain;
        stageDelay_.setDelay(audioDelayOf(routing.secondVca, style));
        gainMixer_.setInput(1, &processor_.vcaGain(routing.secondVca));
        gain = &gainMixer_;
    }
    gainPadDelay_.source = gain;
    sideChainVolume_.gain.setSource(gain);
}

void VantaChannel::setLevels(float outputLevelDb, float targetDb) {
    overshootLimiter_.ceiling = outputLevelDb;
    dither_.ceiling = std::clamp(targetDb, kLowestDitherCeilingDb, 0.0f);
}

}  // namespace vanta
