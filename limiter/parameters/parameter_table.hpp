#pragma once

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>

#include "limiter/parameters/parameter_row.hpp"
#include "limiter/styles/style_names.hpp"
#include "plugin/parameters/number_text.hpp"

namespace vanta {

/// A time from 0 to 10 s along a curve, shown in ms.
constexpr ParameterValues timeValues(EngineCurve curve, float initialMs, std::string_view format) {
    ParameterValues values = numberValues(0.0f, 1.0f, initialMs, ParameterUnit::Ms, format);
    values.curve = curve;
    values.engineScale = 10.0f;
    values.shownScale = 1000.0f;
    return values;
}

/// The first half of the range links pairs, the second all channels; half-way is all of the first.
constexpr ParameterValues channelLinkValues() {
    ParameterValues values = numberValues(0.0f, 1.0f, 50.0f, ParameterUnit::Percent, "%.0f");
    values.shownScale = 100.0f;
    return values;
}

/// A level that shows its decimals only where it has any.
constexpr ParameterValues loudnessTargetValues() {
    ParameterValues values = numberValues(-60.0f, 0.0f, -23.0f);
    values.formatter = wholeOrTenthsText;
    return values;
}

/// The parameters in host order: a row's position is the index of its parameter. Presets, sessions and hosts
/// know parameters by index and name, so a new one goes to the end. Its long help stands in
/// resources/text/parameter_help.txt.
inline constexpr auto kParameterTable = std::to_array<ParameterRow>({
    {.name = "Gain",
     .group = ParameterGroup::Limiting,
     .values = numberValues(0.0f, 30.0f, 0.0f, ParameterUnit::Db),
     .summary = "gain into the limiter",
     .keptByLockOutput = true},
    {.name = "Style",
     .group = ParameterGroup::Limiting,
     .values = choiceValues(kStyleNames, "Modern"),
     .summary = "limiting algorithm",
     .automatable = false},
    {.name = "Lookahead",
     .group = ParameterGroup::Limiting,
     .values = numberValues(0.0f, 5.0f, 0.2f, ParameterUnit::Ms, "%.2f"),
     .summary = "how far to look ahead for peaks"},
    {.name = "Attack",
     .group = ParameterGroup::Limiting,
     .values = timeValues(EngineCurve::Attack, 250.0f, "%.1f"),
     .summary = "how quickly the slow stage steps in"},
    {.name = "Release",
     .group = ParameterGroup::Limiting,
     .values = timeValues(EngineCurve::Release, 500.0f, "%.0f"),
     .summary = "how quickly the slow stage recovers"},
    {.name = "Channel Link Transients",
     .group = ParameterGroup::ChannelLinking,
     .values = channelLinkValues(),
     .summary = "how closely channels share the limiting of short peaks"},
    {.name = "Channel Link Release",
     .group = ParameterGroup::ChannelLinking,
     .values = channelLinkValues(),
     .summary = "how closely channels share the gain reduction of the slow stage"},
    {.name = "Channel Link Center",
     .group = ParameterGroup::ChannelLinking,
     .values = switchValues("Excluded,Included", "Excluded"),
     .summary = "link the center channel with the others",
     .sincePreset = 2},
    {.name = "Channel Link LFE",
     .group = ParameterGroup::ChannelLinking,
     .values = switchValues("Excluded,Included", "Excluded"),
     .summary = "link the LFE channel when all channels are linked",
     .sincePreset = 2},
    {.name = "Oversampling",
     .group = ParameterGroup::Output,
     .values = choiceValues("Off,2x,4x,8x,16x,32x", "Off"),
     .summary = "run the limiter at a multiple of the sample rate",
     .automatable = false,
     .keptByLockOutput = true},
    {.name = "True Peak Limiting",
     .group = ParameterGroup::Output,
     .values = switchValues("Off,On", "On"),
     .summary = "limit peaks between samples too",
     .automatable = false,
     .keptByLockOutput = true},
    {.name = "Dithering",
     .group = ParameterGroup::Output,
     .values = choiceValues("Off,16 Bits,18 Bits,20 Bits,22 Bits,24 Bits", "Off"),
     .summary = "word length to dither to",
     .keptByLockOutput = true},
    {.name = "Noise Shaping",
     .group = ParameterGroup::Output,
     .values = choiceValues("None,Basic,Optimized,Weighted", "Optimized"),
     .summary = "how the dither noise is spread over frequencies",
     .keptByLockOutput = true},
    {.name = "Filter DC Offset",
     .group = ParameterGroup::Output,
     .values = switchValues("Off,On", "Off"),
     .summary = "remove any DC offset from the input",
     .keptByLockOutput = true},
    {.name = "Side Chain Triggering",
     .group = ParameterGroup::Limiting,
     .values = switchValues("Off,On", "Off"),
     .summary = "let the side chain decide how far to turn down"},
    {.name = "Unity Gain",
     .group = ParameterGroup::Monitoring,
     .values = switchValues("Off,On", "Off"),
     .summary = "take the added gain back out, to compare at equal level",
     .automatable = false,
     .keptByLockOutput = true},
    {.name = "Audition Limiting",
     .group = ParameterGroup::Monitoring,
     .values = switchValues("Off,On", "Off"),
     .summary = "hear only what the limiter removes",
     .automatable = false,
     .sincePreset = 2},
    {.name = "Bypass",
     .group = ParameterGroup::Monitoring,
     .values = switchValues("Not Bypassed,Bypassed", "Not Bypassed"),
     .summary = "pass the input through unprocessed, at the same latency",
     .role = ParameterRole::Bypass},
    {.name = "Output Level",
     .group = ParameterGroup::Output,
     .values = numberValues(-30.0f, 0.0f, 0.0f, ParameterUnit::OutputDbtp),
     .summary = "ceiling that the output does not exceed",
     .keptByLockOutput = true},
    {.name = "Lock Output",
     .group = ParameterGroup::Output,
     .values = switchValues("Unlocked,Locked", "Locked"),
     .summary = "keep gain and output settings when a preset is loaded",
     .automatable = false,
     .followsInterface = true},
    {.name = "Receive Midi",
     .group = ParameterGroup::Interface,
     .values = choiceValues("Enabled,Disabled", "Enabled"),
     .summary = "accept MIDI controllers and program changes",
     .role = ParameterRole::ReceiveMidi},
    {.name = "Show Advanced",
     .group = ParameterGroup::Interface,
     .values = switchValues("Hide,Show", "Hide"),
     .summary = "show the panel with style, times and channel linking",
     .automatable = false,
     .followsInterface = true},
    {.name = "True Peak Metering",
     .group = ParameterGroup::Interface,
     .values = switchValues("Show Sample Peaks,Show True Peaks", "Show True Peaks"),
     .summary = "show true peaks in the output meter",
     .automatable = false,
     .followsInterface = true},
    {.name = "Display Mode",
     .group = ParameterGroup::Interface,
     .values = choiceValues("Slow Down,Fast,Slow,Infinite,Off", "Slow Down"),
     .summary = "how the level display moves",
     .automatable = false,
     .followsInterface = true},
    {.name = "Meter Scale",
     .group = ParameterGroup::Interface,
     .values = choiceValues("-16 dB,-32 dB,-48 dB,K-12,K-14,K-20,Loudness", "-48 dB"),
     .summary = "range of the output meter",
     .automatable = false,
     .followsInterface = true},
    {.name = "Loudness Time Scale",
     .group = ParameterGroup::Loudness,
     .values = choiceValues("Momentary,Short Term,Integrated", "Short Term"),
     .summary = "which loudness is shown largest",
     .automatable = false,
     .followsInterface = true},
    {.name = "Loudness Meter Scale",
     .group = ParameterGroup::Loudness,
     .values = choiceValues("Target +9,Target +18", "Target +9"),
     .summary = "how far the loudness meter reaches above its target",
     .automatable = false,
     .followsInterface = true},
    {.name = "Loudness Meter Origin",
     .group = ParameterGroup::Loudness,
     .values = choiceValues("Absolute,Relative", "Absolute"),
     .summary = "show loudness in LUFS, or in LU relative to the target",
     .automatable = false,
     .followsInterface = true},
    {.name = "Loudness Meter Target",
     .group = ParameterGroup::Loudness,
     .values = loudnessTargetValues(),
     .summary = "loudness that you are aiming for, in LUFS",
     .automatable = false,
     .followsInterface = true},
    {.name = "Loudness Integrated Peak Time Scale",
     .group = ParameterGroup::Loudness,
     .values = choiceValues("Max Momentary,Max Short Term", "Max Momentary"),
     .summary = "which maximum is shown next to the integrated loudness",
     .automatable = false,
     .followsInterface = true},
    {.name = "Loudness Recording",
     .group = ParameterGroup::Loudness,
     .values = switchValues("Paused,Recording", "Recording"),
     .summary = "run or pause the loudness measurement",
     .automatable = false,
     .followsInterface = true},
});

/// The row of a name. std::logic_error, or no constant expression, if there is none.
constexpr const ParameterRow& parameterRow(std::string_view name) {
    const auto row = std::ranges::find(kParameterTable, name, &ParameterRow::name);
    if (row == kParameterTable.end()) throw std::logic_error("a parameter that the table lacks");
    return *row;
}

/// A name that the table has; any other does not compile.
consteval const char* rowName(std::string_view name) {
    return parameterRow(name).name.data();
}

}  // namespace vanta
