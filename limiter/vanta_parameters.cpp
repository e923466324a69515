#include "limiter/vanta_parameters.hpp"

#include <string>

#include "limiter/styles/engine_curve.hpp"
#include "plugin/parameters/number_text.hpp"
#include "plugin/parameters/parameter_units.hpp"

namespace vanta {
namespace {

/// Attack and Release run from 0 to 10 s along a curve and are shown in ms.
void setUpTime(FloatPluginParameter& parameter, EngineCurve curve, const std::string& format,
               float initialMs) {
    FloatDisplay& display = parameter.display;
    parameter.setRange(0.0f, 1.0f, 0.0f);
    display.curve = curveFunction(curve);
    display.inverseCurve = inverseCurveFunction(curve);
    display.setDisplayRange(0.0f, 10.0f);
    display.displayScale = 1000.0f;
    display.setUnit(MsParameterUnit::instance());
    display.format = format;
    parameter.setRange(0.0f, 1.0f, parameter.fromDisplay(initialMs));
}

void setUpChoice(IndexedParameter& parameter, std::string_view labels, int initial) {
    parameter.setLabels(labels);
    parameter.setRange(0, static_cast<int>(parameter.labels().size()) - 1, initial);
}

constexpr std::string_view kOffOn = "Off,On";
constexpr std::string_view kExcludedIncluded = "Excluded,Included";

}  // namespace

VantaParameters::VantaParameters(GenericPluginBase& plugin)
    : gain(plugin, "Gain"),
      style(plugin, "Style"),
      lookahead(plugin, "Lookahead"),
      attack(plugin, "Attack"),
      release(plugin, "Release"),
      channelLinkTransients(plugin, "Channel Link Transients"),
      channelLinkRelease(plugin, "Channel Link Release"),
      channelLinkCenter(plugin, "Channel Link Center"),
      channelLinkLfe(plugin, "Channel Link LFE"),
      oversampling(plugin, "Oversampling"),
      truePeakLimiting(plugin, "True Peak Limiting"),
      dithering(plugin, "Dithering"),
      noiseShaping(plugin, "Noise Shaping"),
      filterDcOffset(plugin, "Filter DC Offset"),
      sideChainTriggering(plugin, "Side Chain Triggering"),
      unityGain(plugin, "Unity Gain"),
      auditionLimiting(plugin, "Audition Limiting"),
      bypass(plugin, "Bypass"),
      outputLevel(plugin, "Output Level"),
      lockOutput(plugin, "Lock Output"),
      receiveMidi(plugin, "Receive Midi"),
      showAdvanced(plugin, "Show Advanced"),
      truePeakMetering(plugin, "True Peak Metering"),
      displayMode(plugin, "Display Mode"),
      meterScale(plugin, "Meter Scale"),
      loudnessTimeScale(plugin, "Loudness Time Scale"),
      loudnessMeterScale(plugin, "Loudness Meter Scale"),
      loudnessMeterOrigin(plugin, "Loudness Meter Origin"),
      loudnessMeterTarget(plugin, "Loudness Meter Target"),
      integratedPeakTimeScale(plugin, "Loudness Integrated Peak Time Scale"),
      loudnessRecording(plugin, "Loudness Recording"),
      owner_(plugin) {
    setUpLevels();
    setUpTimes();
    setUpChannelLinks();
    setUpChoices();
    setUpSwitches();
    describePlugin();
}

void VantaParameters::setUpLevels() {
    gain.setRange(0.0f, 30.0f, 0.0f);
    gain.display.setUnit(DBParameterUnit::db());
    outputLevel.setRange(-30.0f, 0.0f, 0.0f);
    outputLevel.display.setUnit(DBParameterUnit::outputLevel(true));
    outputLevel.display.unitChoice = [this]() -> const FloatPluginParameterUnit& {
        return DBParameterUnit::outputLevel(truePeakLimiting.mapped());
    };
    loudnessMeterTarget.setRange(-60.0f, 0.0f, -23.0f);
    loudnessMeterTarget.display.formatter = wholeOrTenthsText;
}

void VantaParameters::setUpTimes() {
    lookahead.setRange(0.0f, 5.0f, 0.2f);
    lookahead.display.setUnit(MsParameterUnit::instance());
    lookahead.display.format = "%.2f";
    setUpTime(attack, EngineCurve::Attack, "%.1f", 250.0f);
    setUpTime(release, EngineCurve::Release, "%.0f", 500.0f);
}

void VantaParameters::setUpChannelLinks() {
    for (ChannelLinkParameter* link : {&channelLinkTransients, &channelLinkRelease}) {
        link->setRange(0.0f, 1.0f, 0.5f);
        link->setSwitches(channelLinkCenter, channelLinkLfe);
    }
}

void VantaParameters::setUpChoices() {
    setUpChoice(style, "Transparent,Punchy,Dynamic,Allround,Aggressive,Modern,Bus,Safe", 5);
    setUpChoice(oversampling, "Off,2x,4x,8x,16x,32x", 0);
    setUpChoice(dithering, "Off,16 Bits,18 Bits,20 Bits,22 Bits,24 Bits", 0);
    setUpChoice(noiseShaping, "None,Basic,Optimized,Weighted", 2);
    setUpChoice(receiveMidi, "Enabled,Disabled", 0);
    setUpChoice(displayMode, "Slow Down,Fast,Slow,Infinite,Off", 0);
    setUpChoice(meterScale, "-16 dB,-32 dB,-48 dB,K-12,K-14,K-20,Loudness", 2);
    setUpChoice(loudnessTimeScale, "Momentary,Short Term,Integrated", 1);
    setUpChoice(loudnessMeterScale, "Target +9,Target +18", 0);
    setUpChoice(loudnessMeterOrigin, "Absolute,Relative", 0);
    setUpChoice(integratedPeakTimeScale, "Max Momentary,Max Short Term", 0);
}

void VantaParameters::setUpSwitches() {
    setUpChoice(channelLinkCenter, kExcludedIncluded, 0);
    setUpChoice(channelLinkLfe, kExcludedIncluded, 0);
    setUpChoice(truePeakLimiting, kOffOn, 1);
    setUpChoice(filterDcOffset, kOffOn, 0);
    setUpChoice(sideChainTriggering, kOffOn, 0);
    setUpChoice(unityGain, kOffOn, 0);
    setUpChoice(auditionLimiting, kOffOn, 0);
    setUpChoice(bypass, "Not Bypassed,Bypassed", 0);
    setUpChoice(lockOutput, "Unlocked,Locked", 1);
    setUpChoice(showAdvanced, "Hide,Show", 0);
    setUpChoice(truePeakMetering, "Show Sample Peaks,Show True Peaks", 1);
    setUpChoice(loudnessRecording, "Paused,Recording", 1);
}

std::array<AbstractPluginParameter*, 8> VantaParameters::lockedParameters() {
    return {&gain,         &outputLevel,      &oversampling, &dithering,
            &noiseShaping, &truePeakLimiting, &unityGain,    &filterDcOffset};
}

void VantaParameters::describePlugin() {
    // Changes of these reset the signal path or do not concern the sound.
    for (AbstractPluginParameter* parameter : std::initializer_list<AbstractPluginParameter*>{
             &style, &oversampling, &truePeakLimiting, &unityGain, &auditionLimiting, &lockOutput,
             &showAdvanced, &truePeakMetering, &displayMode, &meterScale, &loudnessTimeScale,
             &loudnessMeterScale, &loudnessMeterOrigin, &loudnessMeterTarget, &integratedPeakTimeScale,
             &loudnessRecording}) {
        parameter->automatable = false;
    }
    for (int i = 0; i < kParameterCount; ++i) {
        AbstractPluginParameter& parameter = *owner_.parameterAt(gain.index() + i);
        parameter.helpText = vantaParameterHelp(i);
    }
    owner_.hasOfflineProcessor = true;
    owner_.supportsMono = true;
    owner_.supportsSurround = true;
    owner_.gainReductionSource = 5;
    owner_.receiveMidiParameter = &receiveMidi;
    owner_.bypassParameter = &bypass;
    owner_.sideChainAvailable = true;
    owner_.audioSourceCount = 3;
    owner_.levelSourcesPerChannel = 3;
    owner_.globalLevelSources = 3;
}

}  // namespace vanta
