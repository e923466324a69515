#include <gtest/gtest.h>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <set>

#include "limiter/styles/engine_layout.hpp"
#include "limiter/styles/style_check.hpp"
#include "limiter/styles/style_record.hpp"
#include "limiter/styles/style_resources.hpp"
#include "limiter/styles/style_source.hpp"

namespace vanta {
namespace {

const EngineLayout& limiterLayout() {
    static const EngineLayout layout(limiterConfiguration());
    return layout;
}

int positionOf(std::string_view name) {
    return limiterLayout().findParameter(name).value_or(-1);
}

float valueOf(std::span<const float> values, std::string_view name) {
    return values[static_cast<std::size_t>(positionOf(name))];
}

std::vector<float> storedStyle(std::string_view name) {
    for (const Resource& resource : styleResources()) {
        if (resource.name == name) return readStyleRecord(resource.bytes);
    }
    throw std::runtime_error(fmt::format("no resource {}", name));
}

/// The message of the fault that the source gives, or "none".
std::string faultOf(std::string_view source) {
    try {
        parseStyleSource(limiterLayout(), source, "x.style");
    } catch (const StyleError& error) {
        return error.what();
    }
    return "none";
}

// ---- the tables ----

TEST(EngineLayout, PutsEveryNameAtItsPlaceInTheRecord) {
    EXPECT_EQ(limiterLayout().parameters().size(), 749u);
    const struct {
        const char* name;
        int position;
    } cases[] = {{"Num Active Inputs", 0},
                 {"Num Active Main Sources", 1},
                 {"Main Threshold", kMainThresholdPosition},
                 {"Custom 2", 7},
                 {"Num Look-ahead Stages", 8},
                 {"Num Output SmartClippers", 10},
                 {"Num Active Filters", 11},
                 {"Filter Set 1 Low Pass Freq", 12},
                 {"Filter Set 6 Solo", 35},
                 {"Saturator 1 Drive", 37},
                 {"Crossover 6 Filter Slope", 67},
                 {"Num Active Detectors", 68},
                 {"Detector 2 Knee", 69 + 11 + 4},
                 {"Detector 6 Limit", 134},
                 {"Converter 6 Conversion", 141},
                 {"Num Active Peak Hold Sources", 142},
                 {"Peak Hold 6 Hold", 148},
                 {"AveragingFilter 6 Window Size", 161},
                 {"Convolver 6 Power", 192},
                 {"Capacitor 12 Hold", 277},
                 {"Transfer Curve 6 Strength", 290},
                 {"Mixer 4 Mix", 295},
                 {"Operator 6 Operation", 302},
                 {"Delay 6", 309},
                 {"Constant 1", 311},
                 {"VCA 6 Num SmartClippers In Gain Path", 347},
                 {"Num Active Slots", 348},
                 {"Slot 1 Source", 349},
                 {"Slot 80 Target", 748}};
    for (const auto& c : cases) EXPECT_EQ(positionOf(c.name), c.position) << c.name;
}

TEST(EngineLayout, NumbersSourcesAndTargets) {
    const EngineLayout& layout = limiterLayout();
    EXPECT_EQ(layout.sources().size(), 108u);
    EXPECT_EQ(layout.targets().size(), 405u);
    EXPECT_EQ(layout.elementTargetCount(), 325);
    EXPECT_EQ(layout.findSource("Custom 2"), 7);
    EXPECT_EQ(layout.findSource("Filter Set 1"), 8);
    EXPECT_EQ(layout.findSource("Crossover 1 Output 2"), 21);
    EXPECT_EQ(layout.findSource("VCA 6"), 107);
    EXPECT_EQ(layout.findTarget("Output"), kOutputTarget);
    EXPECT_EQ(layout.findTarget("Fil 1 Input"), 7);
    EXPECT_EQ(layout.findTarget("VCA 6 Look-ahead"), 324);
    EXPECT_EQ(layout.findTarget("Slot 80 Level"), 404);
    EXPECT_EQ(layout.findTarget("Det 2 Threshold"), layout.targetIndex(ElementKind::Detector, 1, 4));
    EXPECT_FALSE(layout.findTarget("Detector 2 Threshold"));
}

TEST(EngineLayout, BindsEveryFloatToAnInputOfItsOwnElement) {
    const EngineLayout& layout = limiterLayout();
    std::set<int> bound;
    for (const EngineParameter& parameter : layout.parameters()) {
        if (parameter.target < 0) {
            EXPECT_TRUE(!parameter.description.isFloat() || parameter.name.ends_with(" Power"))
                << parameter.name;
            continue;
        }
        const EngineTarget& target = layout.targets()[static_cast<std::size_t>(parameter.target)];
        EXPECT_TRUE(parameter.description.isFloat()) << parameter.name;
        EXPECT_EQ(target.kind, parameter.kind) << parameter.name;
        EXPECT_EQ(target.element, parameter.element) << parameter.name;
        EXPECT_FALSE(layout.rangeOf(parameter.target).isAudio) << parameter.name;
        EXPECT_TRUE(bound.insert(parameter.target).second) << parameter.name << " shares its target";
    }
    // Every control input has a base value; audio inputs have none.
    for (int i = 0; i < static_cast<int>(layout.targets().size()); ++i) {
        EXPECT_NE(bound.contains(i), layout.rangeOf(i).isAudio)
            << layout.targets()[static_cast<std::size_t>(i)].name;
    }
    EXPECT_EQ(layout.parameters()[static_cast<std::size_t>(positionOf("Filter Set 2 Low Pass Freq"))].target,
              layout.findTarget("Fil 2 Low Pass Freq"));
    EXPECT_EQ(layout.parameters()[static_cast<std::size_t>(positionOf("Capacitor 12 Release Shape"))].target,
              layout.findTarget("Cap 12 Release Curve"));
}

float engineValue(std::string_view name, float stored) {
    const ParameterDescription& d =
        limiterLayout().parameters()[static_cast<std::size_t>(positionOf(name))].description;
    return d.curveOffset + curveFunction(d.curve)(stored) * d.curveScale;
}

TEST(EngineLayout, TurnsStoredValuesIntoEngineValues) {
    EXPECT_FLOAT_EQ(engineValue("Detector 1 Ratio", 0.0f), 1.0f);
    EXPECT_NEAR(engineValue("Detector 1 Ratio", 0.9f), 10.0f, 1e-5f);
    EXPECT_FLOAT_EQ(engineValue("Detector 1 Ratio", 1.0f), 100.0f);
    EXPECT_NEAR(engineValue("Main Ratio", 0.9f), 9.0f, 1e-5f);
    EXPECT_NEAR(std::exp2(engineValue("Filter Set 1 Low Pass Freq", 1.0f)), 30000.0f, 0.05f);
    EXPECT_NEAR(std::exp2(engineValue("Filter Set 1 High Pass Freq", 0.0f)), 5.0f, 1e-5f);
    EXPECT_NEAR(std::exp2(engineValue("Crossover 3 Frequency", 0.5f)), std::sqrt(5.0f * 30000.0f), 1e-3f);
    EXPECT_FLOAT_EQ(engineValue("Detector 1 Stereo Link", 0.0f), -1.0f);
    EXPECT_FLOAT_EQ(engineValue("Detector 1 Stereo Link", 1.0f), 1.0f);
    EXPECT_NEAR(engineValue("Main Attack", 0.39764f), 0.25f, 1.3e-5f);
    EXPECT_NEAR(engineValue("Main Release", 0.41774f), 0.5f, 2e-5f);
    EXPECT_FLOAT_EQ(engineValue("Main Release", 0.9f), 5.0f);
    EXPECT_FLOAT_EQ(engineValue("Main Release", 1.0f), 10.0f);
    EXPECT_FLOAT_EQ(engineValue("Capacitor 1 Hold", 1.0f), 0.1f);
    EXPECT_FLOAT_EQ(engineValue("Capacitor 1 Attack Smoothing", -0.25f), -0.05f);
    EXPECT_FLOAT_EQ(engineValue("Peak Hold 1 Hold", 0.1f), 0.1f);
    EXPECT_FLOAT_EQ(engineValue("Slot 1 Level", 0.5f), 1.0f);
    EXPECT_EQ(engineValue("Slot 1 Level", 0.0f), 0.0f);
    EXPECT_NEAR(engineValue("Slot 1 Level", 0.14655f), 0.1f, 5e-6f);
}

TEST(EngineCurve, GoesBackToTheStoredValue) {
    for (const EngineCurve curve : {EngineCurve::Identity, EngineCurve::Attack, EngineCurve::Release,
                                    EngineCurve::Time, EngineCurve::SlotLevel, EngineCurve::Ratio}) {
        float last = -1e9f;
        for (int i = -200; i <= 200; ++i) {
            const float v = static_cast<float>(i) / 200.0f;
            const float result = curveFunction(curve)(v);
            EXPECT_GT(result, last) << "curve " << static_cast<int>(curve) << " at " << v;
            EXPECT_NEAR(inverseCurveFunction(curve)(result), v, 2e-6f) << static_cast<int>(curve);
            EXPECT_EQ(result, -curveFunction(curve)(-v));
            last = result;
        }
    }
}

/// A slot's contribution: what the source says, scaled by range and level.
float connected(std::string_view source, std::string_view target, float level, float value) {
    const EngineLayout& layout = limiterLayout();
    const EngineSource& from = layout.sources()[static_cast<std::size_t>(layout.findSource(source).value())];
    const EngineRange& range = layout.rangeOf(layout.findTarget(target).value());
    const float sum = value * range.factorFor(static_cast<int>(from.kind)) * slotLevelCurve(level);
    return range.isAudio ? sum : std::clamp(sum, range.minimum, range.maximum);
}

TEST(EngineRanges, ScaleEachSourceToItsTarget) {
    // Look-ahead: a knob of 5 ms at its end and at 0.2 ms reaches hold, window and look-ahead as it reads.
    for (const char* target : {"VCA 1 Look-ahead", "PkH 1 Hold", "Cvl 1 Window Size"}) {
        EXPECT_NEAR(connected("Custom 1", target, 0.14655f, 1.0f), 5.0f, 3e-4f) << target;
        EXPECT_NEAR(connected("Custom 1", target, 0.14655f, 0.2f / 5), 0.2f, 1e-5f) << target;
    }
    // Limits: 5 ms of look-ahead, 50 ms of hold.
    EXPECT_EQ(connected("Custom 1", "VCA 1 Look-ahead", 0.5f, 1.0f), 5.0f);
    EXPECT_EQ(connected("Custom 1", "PkH 1 Hold", 0.5f, 1.0f), 50.0f);
    // A threshold arrives as it is, also through a VCA.
    EXPECT_FLOAT_EQ(connected("Main Threshold", "Det 1 Threshold", 0.5f, -12.0f), -12.0f);
    EXPECT_FLOAT_EQ(connected("Main Threshold", "VCA 3 Input", 0.5f, -12.0f), -12.0f);
    EXPECT_FLOAT_EQ(connected("VCA 3", "Det 1 Threshold", 0.5f, -12.0f), -12.0f);
    EXPECT_FLOAT_EQ(connected("Detector 1", "Det 2 Threshold", 0.5f, 10.0f), 25.0f);
    EXPECT_FLOAT_EQ(connected("Capacitor 1", "Det 2 Threshold", 0.5f, 10.0f), 10.0f);
    // Times arrive in seconds as they are; a gain change of 24 dB spans the target.
    EXPECT_FLOAT_EQ(connected("Main Release", "Cap 1 Release", 0.5f, 0.5f), 0.5f);
    EXPECT_FLOAT_EQ(connected("Capacitor 3", "Cap 1 Release", 0.5f, 24.0f), 10.0f);
    EXPECT_FLOAT_EQ(connected("Mixer 1", "Main Ratio", 0.5f, 1.0f), 50.0f);
    // Types without a factor of their own take the default.
    EXPECT_FLOAT_EQ(connected("VCA 1", "Sat 1 Drive", 0.5f, 0.5f), 36.0f);
    EXPECT_FLOAT_EQ(connected("Custom 1", "Slot 7 Level", 0.5f, 0.25f), 25.0f);
}

// ---- the eight styles ----

struct Golden {
    const char* name;
    int slots;
    int stages, convolvers, smartClippers;
    const char* parameter;
    float value;
    const char* slot;  ///< the last one
    float level;
    bool inverted;
};

constexpr Golden kGolden[] = {
    {"transparent.limiter", 48, 1, 1, 0, "Detector 1 Stereo Link", 0.6f, "Main Attack to TrC 1 Input", 0.5f,
     false},
    {"punchy.limiter", 32, 1, 1, 0, "Mixer 1 Mix", -1.0f, "VCA 1 to Output", 0.5f, false},
    {"dynamic.limiter", 62, 2, 2, 0, "Constant 1", -0.012001f, "VCA 3 to Det 2 Threshold", 0.5f, false},
    {"allround.limiter", 37, 1, 1, 0, "Convolver 1 Power", 0.61994f, "Main Attack to Cap 2 Attack", 0.10517f,
     false},
    {"aggressive.limiter", 49, 1, 1, 1, "AveragingFilter 2 Power", 1.0001f, "VCA 1 to Output", 0.5f, false},
    {"modern.limiter", 50, 2, 0, 1, "Detector 3 Limit", 12.0f, "Detector 4 to PkH 4 Input", 0.5f, false},
    {"bus.limiter", 29, 1, 1, 1, "Capacitor 1 Release", 0.00052778f, "Custom 1 to VCA 1 Look-ahead", 0.14655f,
     false},
    {"safe.limiter", 37, 1, 0, 1, "Delay 1", 0.98889f, "Main Release to Cap 2 Attack", 0.11552f, true},
};

TEST(Styles, AreTheRecordsInTheOrderOfTheStyleParameter) {
    ASSERT_EQ(styleResources().size(), std::size(kGolden));
    for (std::size_t i = 0; i < std::size(kGolden); ++i) {
        const Resource& resource = styleResources()[i];
        EXPECT_EQ(resource.name, kGolden[i].name);
        ASSERT_EQ(resource.bytes.size(), 3008u);
        const unsigned char header[12] = {'Q', 'D', 'y', 'n', 19, 0, 0, 0, 0xED, 0x02, 0, 0};
        EXPECT_TRUE(std::ranges::equal(resource.bytes.first(12), std::as_bytes(std::span(header))));
    }
}

TEST(Styles, HoldWhatTheyAreKnownFor) {
    const EngineLayout& layout = limiterLayout();
    for (const Golden& golden : kGolden) {
        SCOPED_TRACE(golden.name);
        const std::vector<float> values = storedStyle(golden.name);
        EXPECT_EQ(valueOf(values, "Num Active Slots"), static_cast<float>(golden.slots));
        EXPECT_EQ(values[kLookAheadStagesPosition], static_cast<float>(golden.stages));
        EXPECT_EQ(values[kOutputConvolversPosition], static_cast<float>(golden.convolvers));
        EXPECT_EQ(values[kOutputSmartClippersPosition], static_cast<float>(golden.smartClippers));
        EXPECT_EQ(valueOf(values, golden.parameter), golden.value);
        const auto slotValue = [&](int slot, SlotField field) {
            return values[static_cast<std::size_t>(layout.slotPosition(slot, field))];
        };
        const int last = golden.slots - 1;
        const auto source = static_cast<std::size_t>(slotValue(last, SlotField::Source)) - 1;
        const auto target = static_cast<std::size_t>(slotValue(last, SlotField::Target)) - 1;
        EXPECT_EQ(layout.sources()[source].name + " to " + layout.targets()[target].name, golden.slot);
        EXPECT_EQ(slotValue(last, SlotField::Level), golden.level);
        EXPECT_EQ(slotValue(last, SlotField::Inverted) != 0.0f, golden.inverted);
        for (int slot = 0; slot < layout.configuration().slotCount; ++slot) {
            EXPECT_EQ(slotValue(slot, SlotField::Source) != 0.0f, slot < golden.slots) << "slot " << slot + 1;
            EXPECT_EQ(slotValue(slot, SlotField::Target) != 0.0f, slot < golden.slots) << "slot " << slot + 1;
        }
    }
}

TEST(Styles, HaveNoFaultAndNoLoop) {
    for (const Resource& resource : styleResources()) {
        for (const StyleFault& fault : checkStyle(limiterLayout(), readStyleRecord(resource.bytes))) {
            ADD_FAILURE() << resource.name << ": " << fault.message;
        }
    }
}

/// What the knobs rely on in each style.
TEST(Styles, TakeTheThresholdOfEveryDetectorFromGain) {
    const EngineLayout& layout = limiterLayout();
    for (const Resource& resource : styleResources()) {
        const std::vector<float> values = readStyleRecord(resource.bytes);
        std::set<int> fed;
        for (int slot = 0; slot < layout.configuration().slotCount; ++slot) {
            const auto at = [&](SlotField f) {
                return values[static_cast<std::size_t>(layout.slotPosition(slot, f))];
            };
            const int source = static_cast<int>(at(SlotField::Source)) - 1;
            const bool isThreshold = source == kFirstMainSource || source == layout.findSource("VCA 3");
            if (isThreshold && at(SlotField::Inverted) == 0.0f)
                fed.insert(static_cast<int>(at(SlotField::Target)) - 1);
        }
        const int detectors = static_cast<int>(valueOf(values, "Num Active Detectors"));
        for (int i = 0; i < detectors; ++i) {
            EXPECT_TRUE(fed.contains(layout.targetIndex(ElementKind::Detector, i, 4)))
                << resource.name << " " << i;
        }
    }
}

// ---- reading and writing ----

TEST(StyleSource, ReadsEveryForm) {
    const std::vector<float> values = parseStyleSource(limiterLayout(),
                                                       "# what it is\r\n"
                                                       "Num Active Detectors = 2   # both\r\n"
                                                       "\tDetector 1 Mode = Smart Clipping\n"
                                                       "Detector 2 Threshold = -3.5\n"
                                                       "Filter Set 1 Slope=48\n"
                                                       "Num Active Filters=1\n"
                                                       "Num Active Slots = 4\n"
                                                       "1. Audio Input to Output\n"
                                                       "Trigger Input to Det 1 Input (0.14655)\n"
                                                       " 3. Custom 1 to Slot 2 Level (-0)\n"
                                                       "< Source > to < Target > (1) bypassed",
                                                       "x.style");
    EXPECT_EQ(valueOf(values, "Detector 1 Mode"), 2.0f);
    EXPECT_EQ(valueOf(values, "Detector 2 Threshold"), -3.5f);
    EXPECT_EQ(valueOf(values, "Filter Set 1 Slope"), 3.0f);
    EXPECT_EQ(valueOf(values, "Slot 1 Level"), 0.5f);
    EXPECT_EQ(valueOf(values, "Slot 2 Source"), 2.0f);
    EXPECT_EQ(valueOf(values, "Slot 2 Level"), 0.14655f);
    EXPECT_EQ(valueOf(values, "Slot 3 Level"), 0.0f);
    EXPECT_EQ(valueOf(values, "Slot 3 Inverted"), 1.0f);
    EXPECT_EQ(valueOf(values, "Slot 4 Bypassed"), 1.0f);
    EXPECT_EQ(valueOf(values, "Slot 4 Source"), 0.0f);
    EXPECT_EQ(valueOf(values, "Num Active Main Sources"), 6.0f);
}

TEST(StyleSource, SaysWhatIsWrongAndWhere) {
    // Behind one plain slot, so that nothing else is wrong.
    const std::string plain = "Audio Input to Output\nNum Active Slots = ";
    const struct {
        std::string source;
        const char* fault;
    } cases[] = {
        {plain + "1\nDetector 1 Moode = Peak",
         "x.style:3: unknown parameter \"Detector 1 Moode\"; did you mean \"Detector 1 Mode\"?"},
        {plain + "1\nCustom 1 = 0.1\n\nCustom 1 = 0.1",
         "x.style:5: Custom 1 is given twice, first in line 3"},
        {plain + "1\nCustom 1 = 1.01", "x.style:3: Custom 1 is 1.01, expected 0 to 1"},
        {plain + "1\nCustom 1 = nan", "x.style:3: Custom 1 is nan, expected 0 to 1"},
        {plain + "1\nCustom 1 = 0,5", "x.style:3: Custom 1 is \"0,5\", expected a number from 0 to 1"},
        {plain + "1\nNum Active VCAs = 1.5", "x.style:3: Num Active VCAs is 1.5, expected a whole number"},
        {plain + "1\nNum Active VCAs = 4", "x.style:3: Num Active VCAs is 4, but 3 are built"},
        {plain + "1\nNum Active Mixers = 2", "x.style:3: Num Active Mixers is 2, but 1 is built"},
        {plain + "1\nNum Active VCAs = 1\nVCA 1 Domain = db",
         "x.style:4: VCA 1 Domain is \"db\", expected one of \"Amplitude\", \"dB\", \"Amplitude Inverse\"; "
         "did "
         "you mean \"dB\"?"},
        {plain + "1\nNum Active VCAs = 1\nVCA 1 Num Convolvers In Gain Path = 2",
         "x.style:4: VCA 1 Num Convolvers In Gain Path is 2, but at most 1 counts"},
        {plain + "1\nNum Active Detectors = 2\nDetector 2 Mode = Smart Clipping",
         "x.style:4: Detector 2 has no SmartClipper, the last that has one is Detector 1"},
        {plain + "1\nNum Active VCAs = 1\nVCA 2 Domain = dB",
         "x.style:4: VCA 2 Domain has no effect: Num Active VCAs is 1"},
        {plain + "2", "x.style:2: Num Active Slots is 2, but 1 is listed"},
        {"", "x.style:1: no slot reaches Output: the style is silent"},
        {plain + "2\nTrigger Input to Det 1 Input",
         "x.style:3: slot 2: the target \"Det 1 Input\" is not active: Num Active Detectors is 0"},
        {plain + "2\nPeakHold 1 to Output",
         "x.style:3: slot 2: the source \"PeakHold 1\" is not active: Num Active Peak Hold Sources is 0"},
        {plain + "2\nMain Attack to Slot 3 Level",
         "x.style:3: slot 2: the target \"Slot 3 Level\" is not active: Num Active Slots is 2"},
        {plain + "2\nPeak Hold 1 to Output",
         "x.style:3: unknown source \"Peak Hold 1\"; did you mean \"PeakHold 1\"?"},
        {plain + "2\nAudio Input to Zebra", "x.style:3: unknown target \"Zebra\""},
        {plain + "2\nAudio Input to Output (0.2)",
         "x.style:3: slot 2 makes the connection of slot 1 once more"},
        {plain + "2\n7. Trigger Input to Output", "x.style:3: slot 2 is numbered 7"},
        {plain + "2\nTrigger Input to Output (1.5)",
         "x.style:3: the level of slot 2 is \"(1.5)\", expected \"(0)\" to \"(1)\", or with a minus to "
         "invert the "
         "slot"},
        {plain + "2\nTrigger Input to Output (0.5",
         "x.style:3: the level of slot 2 is \"(0.5\", expected \"(0)\" to \"(1)\", or with a minus to invert "
         "the "
         "slot"},
        {plain + "1\nSlot 1 Level = 0.3",
         "x.style:3: Slot 1 Level is set by the slot's own line, \"Source to Target (Level)\""},
        {plain + "1\nAudio Input",
         "x.style:3: \"Audio Input\" is neither \"Name = value\" nor \"Source to Target "
         "(Level)\""},
        {plain + "2\nCustom 1 to Custom 1",
         "x.style:3: slot 2 closes a loop: Custom 1 is made from what reaches Custom 1"},
        {plain + "3\nNum Active VCAs = 2\nVCA 1 to VCA 2 Gain Change\nVCA 2 to Slot 2 Level",
         "x.style:5: slot 3 closes a loop: VCA 2 is made from what reaches Slot 2 Level"},
    };
    for (const auto& c : cases) EXPECT_EQ(faultOf(c.source), c.fault);
}

TEST(StyleSource, RefusesTheSlotBeyondTheLast) {
    std::string source = "Num Active Slots = 80\n";
    for (int i = 1; i <= 80; ++i) {
        source += i == 1 ? "Audio Input to Output\n" : fmt::format("Main Attack to Slot {} Level\n", i - 1);
    }
    EXPECT_EQ(faultOf(source), "none");
    EXPECT_EQ(faultOf(source + "Main Release to Custom 1\n"), "x.style:82: one slot too many: there are 80");
}

TEST(StyleSource, NamesEveryFaultAtOnce) {
    EXPECT_EQ(faultOf("Custom 3 = 1\nAudio Input to Outptu\n"),
              "x.style:1: unknown parameter \"Custom 3\"; did you mean \"Custom 1\"?\n"
              "x.style:2: unknown target \"Outptu\"; did you mean \"Output\"?\n"
              "x.style:1: Num Active Slots is 0, but 1 is listed");
}

TEST(StyleSource, ComesBackFromItsRecord) {
    for (const Resource& resource : styleResources()) {
        SCOPED_TRACE(resource.name);
        const std::vector<float> values = readStyleRecord(resource.bytes);
        const std::string text = writeStyleSource(limiterLayout(), values);
        const std::vector<std::byte> record =
            writeStyleRecord(parseStyleSource(limiterLayout(), text, "x.style"));
        EXPECT_TRUE(std::ranges::equal(record, resource.bytes)) << text;
    }
    std::vector<float> unusual = storedStyle("bus.limiter");
    unusual[static_cast<std::size_t>(positionOf("Slot 28 Bypassed"))] = 1.0f;
    unusual[static_cast<std::size_t>(positionOf("Slot 7 Level"))] = 1e-7f;
    unusual[static_cast<std::size_t>(positionOf("VCA 1 Look-ahead Enabled"))] = 0.0f;
    EXPECT_EQ(parseStyleSource(limiterLayout(), writeStyleSource(limiterLayout(), unusual), "x.style"),
              unusual);
    unusual[static_cast<std::size_t>(positionOf("Detector 6 Knee"))] = 3.0f;
    EXPECT_NE(writeStyleSource(limiterLayout(), unusual).find("# not active: Detector 6 Knee = 3\n"),
              std::string::npos);
}

TEST(StyleSource, IsTheFileThatTheRepositoryHolds) {
    for (const Resource& resource : styleResources()) {
        const std::string name(resource.name.substr(0, resource.name.find('.')));
        std::ifstream file(std::string(VANTA_STYLE_SOURCES) + "/" + name + ".style");
        const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        ASSERT_FALSE(text.empty()) << name;
        // Kept in the form that the writer gives it, behind the words that say what the style does.
        EXPECT_EQ(text.substr(std::min(text.size(), text.find("\n\n") + 2)),
                  writeStyleSource(limiterLayout(), readStyleRecord(resource.bytes)));
    }
}

TEST(StyleRecord, RefusesWhatIsNoStyle) {
    const std::vector<float> values = limiterLayout().defaultValues();
    const std::vector<std::byte> good = writeStyleRecord(values);
    EXPECT_EQ(readStyleRecord(good), values);
    const auto refused = [](std::vector<std::byte> record) {
        EXPECT_THROW(readStyleRecord(record), StyleError);
    };
    refused({});
    refused({good.begin(), good.end() - 1});
    for (const std::size_t offset : {std::size_t{0}, std::size_t{4}, std::size_t{11}}) {
        std::vector<std::byte> broken = good;
        broken[offset] ^= std::byte{0x80};
        refused(std::move(broken));
    }
    EXPECT_THROW(writeStyleRecord(std::span(values).first(700)), std::invalid_argument);
}

TEST(DynamicsEngineConfiguration, BuildsLessThanItDescribes) {
    const DynamicsEngineConfiguration generic;
    EXPECT_EQ(generic.built, generic.capacity);
    EXPECT_EQ(EngineLayout(generic).parameters().size(), 749u);
    EXPECT_EQ(
        EngineLayout(generic).rangeOf(EngineLayout(generic).findTarget("Det 1 RMS Window").value()).maximum,
        50.0f);
    for (std::size_t i = 0; i < generic.capacity.size(); ++i) {
        EXPECT_LE(limiterConfiguration().built[i], generic.capacity[i]);
    }
}

}  // namespace
}  // namespace vanta
