#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "plugin/parameters/float_plugin_parameter.hpp"
#include "plugin/parameters/indexed_plugin_parameter.hpp"
#include "plugin/parameters/parameter_units.hpp"
#include "plugin/parameters/prop_plugin_parameter.hpp"
#include "tests/plugin/recording_owner.hpp"

namespace vanta::test {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

/// A float parameter with a range and a unit.
struct Knob {
    Knob(float low, float high, std::optional<ParameterUnit> unit = {}) {
        parameter.setRange(low, high, low);
        if (unit) parameter.display.setUnit(parameterUnit(*unit));
    }
    RecordingOwner owner;
    FloatPluginParameter parameter{owner, "P"};
};

struct UnitCase {
    std::optional<ParameterUnit> unit;
    float low, high;
    const char* shown;                                 ///< for the upper end of the range
    std::vector<std::pair<const char*, float>> typed;  ///< and the own number; NaN: not understood
};

TEST(FloatParameterText, ShowsAndReadsEveryUnit) {
    using enum ParameterUnit;
    const float a4 = std::log2(440.0f);
    const std::vector<UnitCase> cases{
        {Hz, 1, 440, "440.00 Hz", {{"0,1 kHz", 100}, {".1k", 100}, {"  100HZ ", 100}, {"30 dB", kNaN}}},
        {Hz, 1, 1500, "1500.0 Hz", {{"A4", 440}, {"a", 440}, {"C#3", 138.59132f}, {"c#3", 138.59132f}}},
        {Hz, 1, 1500, "1500.0 Hz", {{"Bb3", 233.08188f}, {"bB3", 233.08188f}, {"B3", 246.94165f}}},
        {Hz, 1, 20000, "20000 Hz", {{"A4 +50", 452.89298f}, {"C-1", 8.1757989f}, {"A9999", 20000}}},
        {Hz, 1, 20000, "20000 Hz", {{"H4", kNaN}, {"Apple", kNaN}, {".", kNaN}, {"A99999999999", kNaN}}},
        {ExpFreq, 4, 10, "1024.0 Hz", {{"A4", a4}, {"1 kHz", std::log2(1000.0f)}}},
        {Ms, 0, 1e4f, "10000.000 ms", {{"250", 250}, {"0.25 s", 250}, {"2sec", 2000}, {"50%", 5000}}},
        {Sec, 0, 10, "10.000 sec", {{"250ms", 0.25f}, {"2 s", 2}, {"1 h", kNaN}}},
        {Db, -30, 30, "+30.00 dB", {{"50%", 0}, {"0.5x", -6.0206f}, {"2*", 6.0206f}, {"-2x", -30}}},
        {Db, -30, 30, "+30.00 dB", {{"-INF dB", -30}, {"100", 30}, {"3 dBTP", kNaN}}},
        {Db, -60, 0, "0.00 dB", {{"-3", -3}, {"3", -3}, {"3 dB", -3}, {"2x", 0}, {"0.5 x", -6.0206f}}},
        {Db, -200, -180, "-INF dB", {}},
        {Dbtp, -60, -1, "-1.00 dBTP", {{"-2 dBTP", -2}, {"-2 dB", kNaN}}},
        {OutputDb, -30, -1, "-1.00 dB", {{"-2 dB", -2}, {"-2 dbtp", -2}}},
        {OutputDbtp, -30, -1, "-1.00 dBTP", {{"-2 dB", -2}, {"-2 dbtp", -2}}},
        {DbRange, 0, 30, "30.00 dB", {{"12 dB", 12}, {"2x", 6.0206f}}},
        {Octaves, -2, 1.5f, "18.000 semitones", {{"7", 7.0f / 12}, {"1 octave", 1}, {"50 cents", 1.0f / 24}}},
        {Percent, 0, 50, "50.00%", {{"50%", 25}, {"50", 50}}},
        {Ratio, 1, 100, "100.00:1", {{"4:1", 4}}},
        {Slope, 0, 96, "96.0 dB/oct", {{"12 dB/oct", 12}}},
        {{}, 0, 1, "1.000", {{"0.5", 0.5f}, {"50 %", 0.5f}, {"0.5 dB", kNaN}, {"", kNaN}, {"nan", kNaN}}},
        {{}, 0, 100, "100.000", {{"0x10", kNaN}}}};
    for (const UnitCase& c : cases) {
        const Knob knob(c.low, c.high, c.unit);
        EXPECT_EQ(knob.parameter.text(c.high), c.shown);
        for (const auto& [typed, value] : c.typed) {
            float out = 12345.0f;
            EXPECT_EQ(knob.parameter.parseText(typed, &out), !std::isnan(value)) << typed << c.shown;
            const float expected = std::isnan(value) ? 12345.0f : value;
            EXPECT_NEAR(out, expected, 2e-6f * (std::abs(expected) + 1.0f)) << typed << c.shown;
        }
        EXPECT_TRUE(knob.owner.changes.empty());
    }
}

TEST(FloatParameterText, ReadsBackWhatItShowsInEveryUnit) {
    for (const FloatPluginParameterUnit& unit : parameterUnits()) {
        for (const auto& [low, high] : {std::pair{1.0f, 12.0f}, {-150.0f, 0.0f}, {-3.0f, 50.0f}}) {
            const Knob knob(low, high, unit.id);
            for (int i = 0; i <= 500; ++i) {
                const std::string text =
                    knob.parameter.text(knob.parameter.denormalize(static_cast<float>(i) / 500));
                // A percentage that is typed always means a share of the range.
                if (text.ends_with('%')) continue;
                float back = 0.0f;
                ASSERT_TRUE(knob.parameter.parseText(text, &back)) << text;
                EXPECT_EQ(knob.parameter.text(back), text);
                EXPECT_FALSE(knob.parameter.exceedsRange(text)) << text;
            }
        }
    }
}

TEST(FloatParameterText, TellsWhenATypedValueIsLimited) {
    const Knob knob(-30, 0, ParameterUnit::Db);
    for (const char* inside : {"-30", "30", "0 dB", "100%", "0%", "1x", "nonsense"}) {
        EXPECT_FALSE(knob.parameter.exceedsRange(inside)) << inside;
    }
    for (const char* outside : {"-31", "2x", "-INF", "101%", "-1%"}) {
        EXPECT_TRUE(knob.parameter.exceedsRange(outside)) << outside;
    }
}

TEST(FloatParameterText, FindsAUnitByItsTextAndTakesAnyOtherAsIs) {
    Knob knob(0, 1);
    FloatPluginParameter& time = knob.parameter;
    time.display.setDisplayRange(100.0f, 300.0f);
    time.display.setUnit(std::string("MS"));
    EXPECT_EQ(time.text(0.5f), "200.000 MS");
    float out = 0.0f;
    time.display.setUnit(std::string(":1"));
    EXPECT_EQ(time.display.unit, nullptr);
    EXPECT_TRUE(time.parseText("250 :1", &out));
    EXPECT_FLOAT_EQ(out, 0.75f);
    time.display.setPercentDisplay();
    EXPECT_FLOAT_EQ(time.toDisplay(0.5f), 50.0f);
}

TEST(FloatParameter, TellsItsOwnerOnlyOfRealChanges) {
    RecordingOwner owner;
    FloatPluginParameter first(owner, "First");
    FloatPluginParameter parameter(owner, "P");
    EXPECT_EQ(parameter.index(), 1);
    parameter.setRange(0.0f, 1.0f, 0.5f);
    parameter.setValue(0.5f + 1e-7f, 0);
    parameter.setValue(kNaN, 0);
    EXPECT_TRUE(owner.changes.empty());
    EXPECT_EQ(parameter.value(), 0.5f);
    parameter.setValue(kInf, kFromHost);
    parameter.setValue(7.0f, 0);
    parameter.setValue(-kInf, 0);
    EXPECT_EQ(owner.changes, (std::vector<RecordingOwner::Change>{{1, 1.0f, kFromHost}, {1, 0.0f, 0}}));
    parameter.setRange(0.0f, 100.0f, 0.0f);
    EXPECT_FLOAT_EQ(parameter.scaleValue(10.0f, 20.0f, 40.0f), 20.0f) << "a relative change is carried over";
    EXPECT_FLOAT_EQ(parameter.scaleValue(10.0f, 0.0f, 5.0f), 15.0f);
}

TEST(ParameterTargets, CellsOfIndexedParametersTakeTheMappedValue) {
    enum class Choice { A = 3, B = 7 };
    constexpr int kTable[] = {3, 7};
    RecordingOwner owner;
    PropPluginParameter<Choice> choice(owner, "Choice");
    choice.setRange(0, 1, 0);
    choice.setValueTable(kTable);
    PropPluginParameter<int> asNumber(owner, "Switch");
    Property<int> number(nullptr, 0);
    Property<Choice> typed(nullptr, Choice::A);
    Property<bool> enabled(nullptr, false);
    choice.addTarget(number);
    choice.addTarget(typed);
    asNumber.addTarget(enabled);
    for (AbstractPluginParameter* parameter : {owner.parameterAt(0), owner.parameterAt(1)}) {
        parameter->applyValue(1.0f);
    }
    EXPECT_EQ(number, 7);
    EXPECT_EQ(typed.value(), Choice::B);
    EXPECT_TRUE(enabled);
    choice.clearTargets();
    choice.applyValue(0.0f);
    EXPECT_EQ(number, 7);
    choice.setMapped(Choice::B);
    EXPECT_EQ(choice.value(), 1.0f);
}

struct Steps : testing::Test {
    RecordingOwner owner;
    IndexedPluginParameter<int> parameter{owner, "P"};
};

TEST_F(Steps, AreTruncatedLimitedAndToldOfOnlyWhenTheyChange) {
    parameter.setRange(0, 5, 2);
    for (const float value : {2.9f, kNaN, 1e30f, kInf, -1e30f, 3.99f}) parameter.setValue(value, 0);
    EXPECT_EQ(owner.changes, (std::vector<RecordingOwner::Change>{{0, 5.0f, 0}, {0, 0.0f, 0}, {0, 3.0f, 0}}));
}

TEST_F(Steps, LookMappedValuesUpBothWays) {
    constexpr int kTable[] = {0, 1, 3, 6};
    parameter.setRange(2, 5, 2);
    parameter.setValueTable(kTable, 2);
    for (const auto& [index, mapped] : {std::pair{4, 3}, {-9, 0}, {99, 6}}) {
        EXPECT_EQ(parameter.mappedOf(index), mapped);
    }
    EXPECT_EQ(parameter.indexOf(6), 5);
    EXPECT_EQ(parameter.indexOf(77), 2);
    EXPECT_EQ(parameter.text(4.0f), "3");
}

TEST_F(Steps, ReadLabelsAndIndexes) {
    parameter.setLabels("Off,2x,4x,off");
    parameter.setRange(0, 3, 1);
    const std::pair<const char*, int> cases[] = {// -1: not understood
                                                 {"Off", 0}, {"off", 3}, {"OFF", 0},          {"4X", 2},
                                                 {" 3", 3},  {"+1", 1},  {"4", -1},           {"-1", -1},
                                                 {"", -1},   {"Of", -1}, {"99999999999", -1}, {"+-1", -1}};
    for (const auto& [text, index] : cases) {
        float out = -5.0f;
        EXPECT_EQ(parameter.parseText(text, &out), index >= 0) << text;
        EXPECT_EQ(out, index >= 0 ? static_cast<float>(index) : parameter.value()) << text;
    }
    const std::vector<std::string> others{"None", "Some"};
    parameter.shareLabels(others);
    EXPECT_EQ(parameter.text(1.0f), "Some");
}

TEST_F(Steps, OfAControlWithFewOfThemNarrowTheRangeToTheirZone) {
    parameter.setRange(0, 20, 0);
    parameter.zones = {{5, 6}, {11, 12}};
    for (const auto& [steps, low, high] :
         {std::tuple{6, 0.0f, 5.0f}, {12, 5.0f, 11.0f}, {30, 11.0f, 20.0f}}) {
        float out = 0.0f;
        EXPECT_EQ(parameter.denormalizeZoned(0.0f, steps, &out), steps == 6) << steps;
        EXPECT_EQ(out, low);
        EXPECT_TRUE(parameter.denormalizeZoned(1.0f, steps, &out));
        EXPECT_EQ(out, high);
        EXPECT_EQ(parameter.normalizeZoned(high, steps), 1.0f);
        EXPECT_EQ(parameter.normalizeZoned(low, steps), 0.0f);
    }
    EXPECT_EQ(parameter.zoneValue(12), 11);
    EXPECT_EQ(parameter.zoneValue(7), -1);
}

}  // namespace
}  // namespace vanta::test
