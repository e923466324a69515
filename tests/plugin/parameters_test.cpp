#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "plugin/parameters/float_plugin_parameter.hpp"
#include "plugin/parameters/forward_plugin_parameter.hpp"
#include "plugin/parameters/indexed_plugin_parameter.hpp"
#include "plugin/parameters/parameter_units.hpp"
#include "plugin/parameters/prop_plugin_parameter.hpp"
#include "tests/plugin/recording_owner.hpp"

namespace vanta {
namespace {

using test::RecordingOwner;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

template <typename T>
struct Keeper final : ValueAssignable<T> {
    void assign(T value, void* from) override {
        values.push_back(value);
        sender = from;
    }
    std::vector<T> values;
    void* sender = nullptr;
};

/// One float parameter with a unit and a range, whose own number is what it shows but for ExpFreq and
/// octaves.
struct UnitCase {
    const FloatPluginParameterUnit* unit;
    float low, high;
    const char* typed;
    float expected;  ///< NaN: not understood
};

TEST(FloatParameterText, ReadsWhatUsersType) {
    const auto* hz = &HzParameterUnit::instance();
    const auto* octave = &ExpFreqParameterUnit::instance();
    const auto* ms = &MsParameterUnit::instance();
    const auto* sec = &SecParameterUnit::instance();
    const auto* db = &DBParameterUnit::db();
    const auto* dbtp = &DBParameterUnit::dbtp();
    const auto* level = &DBParameterUnit::outputLevel(true);
    const auto* range = &DBRangeParameterUnit::instance();
    const auto* semitones = &OctavesParameterUnit::instance();
    const auto* percent = &PercentParameterUnit::instance();
    const auto* ratio = &RatioParameterUnit::instance();
    const auto* slope = &SlopeParameterUnit::instance();
    for (const UnitCase& c : std::initializer_list<UnitCase>{{hz, 20, 20000, "1,5 kHz", 1500},
                                                             {hz, 20, 20000, "1.5k", 1500},
                                                             {hz, 20, 20000, "  100HZ ", 100},
                                                             {hz, 20, 20000, "A4", 440},
                                                             {hz, 20, 20000, "a", 440},
                                                             {hz, 20, 20000, "C#3", 138.59132f},
                                                             {hz, 20, 20000, "c#3", 138.59132f},
                                                             {hz, 20, 20000, "Bb3", 233.08188f},
                                                             {hz, 20, 20000, "bB3", 233.08188f},
                                                             {hz, 20, 20000, "B3", 246.94165f},
                                                             {hz, 20, 20000, "A4 +50", 452.89298f},
                                                             {hz, 1, 20000, "C-1", 8.1757989f},
                                                             {hz, 20, 20000, "H4", kNaN},
                                                             {hz, 20, 20000, "Apple", kNaN},
                                                             {hz, 20, 20000, "A99999999999", kNaN},
                                                             {hz, 20, 20000, "A9999", 20000},
                                                             {hz, 20, 20000, "30 dB", kNaN},
                                                             {octave, 4, 15, "A4", std::log2(440.0f)},
                                                             {octave, 4, 15, "1 kHz", std::log2(1000.0f)},
                                                             {ms, 0, 10000, "250", 250},
                                                             {ms, 0, 10000, "0.25 s", 250},
                                                             {ms, 0, 10000, "2sec", 2000},
                                                             {ms, 0, 10000, "50%", 5000},
                                                             {ms, 0, 10000, "1 h", kNaN},
                                                             {sec, 0, 10, "250ms", 0.25f},
                                                             {db, -30, 30, "50%", 0},
                                                             {db, -30, 30, "0.5x", -6.0206f},
                                                             {db, -30, 30, "2*", 6.0206f},
                                                             {db, -30, 30, "-2x", -30},
                                                             {db, -30, 30, "-INF dB", -30},
                                                             {db, -30, 30, "100", 30},
                                                             {db, -30, 30, "3 dBTP", kNaN},
                                                             {db, -60, 0, "-3", -3},
                                                             {db, -60, 0, "3", -3},
                                                             {db, -60, 0, "3 dB", -3},
                                                             {db, -60, 0, "2x", 0},
                                                             {db, -60, 0, "0.5 x", -6.0206f},
                                                             {dbtp, -60, 0, "-1 dBTP", -1},
                                                             {dbtp, -60, 0, "-1 dB", kNaN},
                                                             {level, -30, 0, "-1 dB", -1},
                                                             {level, -30, 0, "-1 dbtp", -1},
                                                             {range, 0, 30, "12 dB", 12},
                                                             {semitones, -2, 2, "7", 7.0f / 12},
                                                             {semitones, -2, 2, "1 octave", 1},
                                                             {semitones, -2, 2, "50 cents", 0.5f / 12},
                                                             {percent, 0, 100, "50%", 50},
                                                             {ratio, 1, 100, "4:1", 4},
                                                             {slope, 0, 96, "12 dB/oct", 12},
                                                             {nullptr, 0, 1, "0.5", 0.5f},
                                                             {nullptr, 0, 1, "0.5 dB", kNaN},
                                                             {nullptr, 0, 1, "50 %", 0.5f},
                                                             {nullptr, 0, 1, "", kNaN},
                                                             {nullptr, 0, 1, "nan", kNaN},
                                                             {nullptr, 0, 100, "0x10", kNaN}}) {
        RecordingOwner owner;
        FloatPluginParameter parameter(owner, "P");
        parameter.setRange(c.low, c.high, c.low);
        if (c.unit) parameter.display.setUnit(*c.unit);
        float out = 12345.0f;
        const bool understood = parameter.parseText(c.typed, &out);
        const std::string what = std::string(c.unit ? c.unit->text() : "no unit") + ", \"" + c.typed + "\"";
        EXPECT_EQ(understood, !std::isnan(c.expected)) << what;
        const float expected = understood ? c.expected : 12345.0f;
        EXPECT_NEAR(out, expected, 2e-6f * (std::abs(expected) + 1.0f)) << what;
        EXPECT_TRUE(owner.changes.empty());
    }
}

TEST(FloatParameterText, TellsWhenATypedValueIsLimited) {
    RecordingOwner owner;
    FloatPluginParameter parameter(owner, "P");
    parameter.setRange(-30.0f, 0.0f, 0.0f);
    parameter.display.setUnit(DBParameterUnit::db());
    for (const char* inside : {"-30", "30", "0 dB", "100%", "0%", "1x", "nonsense"}) {
        EXPECT_FALSE(parameter.exceedsRange(inside)) << inside;
    }
    for (const char* outside : {"-31", "2x", "-INF", "101%", "-1%"}) {
        EXPECT_TRUE(parameter.exceedsRange(outside)) << outside;
    }
}

TEST(FloatParameterText, ShowsNumberSeparatorAndUnit) {
    RecordingOwner owner;
    FloatPluginParameter parameter(owner, "P");
    parameter.setRange(0.0f, 1.0f, 0.0f);
    parameter.display.setPercentDisplay();
    parameter.display.setUnit(PercentParameterUnit::instance());
    EXPECT_EQ(parameter.text(0.5f), "50.00%");
    EXPECT_EQ(parameter.text(0.5f, 4), "50.0");
    EXPECT_EQ(parameter.text(0.5f, 0), "50.00%");

    FloatPluginParameter time(owner, "T");
    time.setRange(0.0f, 1.0f, 0.0f);
    time.display.setDisplayRange(100.0f, 300.0f);
    time.display.setUnit(std::string("MS"));
    EXPECT_EQ(time.display.unit, &MsParameterUnit::instance());
    EXPECT_EQ(time.text(0.5f), "200.000 MS");
    time.display.prefix = "about";
    float out = 0.0f;
    ASSERT_TRUE(time.parseText("about 0.25 s", &out));
    EXPECT_FLOAT_EQ(out, 0.75f);
    time.display.setUnit(std::string("furlongs"));
    EXPECT_EQ(time.display.unit, nullptr);
    EXPECT_TRUE(time.parseText("250 FURLONGS", &out));
    EXPECT_FLOAT_EQ(out, 0.75f);
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
    EXPECT_EQ(parameter.defaultValue(), 0.5f);
}

TEST(FloatParameter, CarriesARelativeChangeOver) {
    RecordingOwner owner;
    FloatPluginParameter parameter(owner, "P");
    parameter.setRange(0.0f, 100.0f, 0.0f);
    EXPECT_FLOAT_EQ(parameter.scaleValue(10.0f, 20.0f, 40.0f), 20.0f);
    EXPECT_FLOAT_EQ(parameter.scaleValue(10.0f, 0.0f, 5.0f), 15.0f);
}

TEST(ParameterTargets, ReceiveTheEngineValueBehindTheListeners) {
    RecordingOwner owner;
    LimFloatPropPluginParameter parameter(owner, "P");
    parameter.setRange(0.0f, 1.0f, 0.0f);
    parameter.display.setDisplayRange(-10.0f, 30.0f);
    Keeper<float> listener;
    LimitedProperty<float> cell(nullptr, -5.0f, 5.0f, 0.0f);
    LimitedProperty<float> other(nullptr, -50.0f, 50.0f, 0.0f);
    parameter.addListener(listener);
    parameter.addTarget(cell);
    parameter.addTarget(other);
    parameter.applyValue(1.0f);
    EXPECT_EQ(listener.values, std::vector<float>{30.0f});
    EXPECT_EQ(listener.sender, static_cast<AbstractPluginParameter*>(&parameter));
    EXPECT_EQ(cell, 5.0f);
    EXPECT_EQ(other, 30.0f);
    parameter.removeTarget(cell);
    parameter.applyValue(0.0f);
    EXPECT_EQ(cell, 5.0f);
    EXPECT_EQ(other, -10.0f);
    parameter.clearTargets();
    parameter.removeListener(listener);
    parameter.applyValue(0.5f);
    EXPECT_EQ(other, -10.0f);
    EXPECT_EQ(listener.values.size(), 2u);
}

TEST(ParameterTargets, CellsOfIndexedParametersTakeTheMappedValue) {
    enum class Choice { A = 3, B = 7 };
    constexpr int kTable[] = {3, 7};
    RecordingOwner owner;
    PropPluginParameter<Choice> choice(owner, "Choice");
    choice.setRange(0, 1, 0);
    choice.setValueTable(kTable);
    Property<int> number(nullptr, 0);
    Property<Choice> typed(nullptr, Choice::A);
    choice.addTarget(number);
    choice.addTarget(typed);
    choice.applyValue(1.0f);
    EXPECT_EQ(number, 7);
    EXPECT_EQ(typed.value(), Choice::B);
    choice.setMapped(Choice::B);
    EXPECT_EQ(choice.value(), 1.0f);
    EXPECT_EQ(choice.mapped(), Choice::B);

    PropPluginParameter<int> asNumber(owner, "Switch");
    PropPluginParameter<bool> asSwitch(owner, "Switch");
    Property<bool> enabled(nullptr, false);
    Property<int> selected(nullptr, 0);
    asNumber.addTarget(enabled);
    asSwitch.addTarget(selected);
    asNumber.applyValue(1.0f);
    asSwitch.applyValue(1.0f);
    EXPECT_TRUE(enabled);
    EXPECT_EQ(selected, 1);
    asNumber.clearTargets();
    asSwitch.removeTarget(selected);
    asNumber.applyValue(0.0f);
    asSwitch.applyValue(0.0f);
    EXPECT_TRUE(enabled);
    EXPECT_EQ(selected, 1);
}

TEST(ForwardParameter, HandsOnEveryValueAsItCame) {
    RecordingOwner owner;
    ForwardPluginParameter<FloatPluginParameter> front(owner, "Front");
    FloatPluginParameter behind(owner, "Behind");
    behind.setRange(0.0f, 10.0f, 0.0f);
    front.setValue(1.0f, 0);
    front.target = &behind;
    front.setValue(1.0f, kFromHost);
    EXPECT_EQ(owner.changes.back(), (RecordingOwner::Change{1, 1.0f, kFromHost}));
    front.setValue(4.0f, 0);
    EXPECT_EQ(front.value(), 1.0f);
    EXPECT_EQ(behind.value(), 4.0f);
}

TEST(IndexedParameter, EveryIndexSurvivesNormalisation) {
    RecordingOwner owner;
    IndexedPluginParameter<int> parameter(owner, "P");
    for (const auto& [low, high] : {std::pair{0, 1}, {0, 405}, {-7, 13}, {3, 3}, {0, 108}}) {
        parameter.setRange(low, high, low);
        for (int i = low; i <= high; ++i) {
            EXPECT_EQ(parameter.denormalize(parameter.normalize(static_cast<float>(i))),
                      static_cast<float>(i));
        }
        EXPECT_EQ(parameter.denormalize(-1.0f), static_cast<float>(low));
        EXPECT_EQ(parameter.denormalize(kInf), static_cast<float>(high));
    }
    parameter.setRange(0, 4, 0);
    EXPECT_EQ(parameter.denormalize(0.124f), 0.0f);
    EXPECT_EQ(parameter.denormalize(0.126f), 1.0f);
}

TEST(IndexedParameter, TruncatesLimitsAndTellsOnlyOfRealChanges) {
    RecordingOwner owner;
    IndexedPluginParameter<int> parameter(owner, "P");
    parameter.setRange(0, 5, 2);
    parameter.setValue(2.9f, 0);
    parameter.setValue(kNaN, 0);
    EXPECT_TRUE(owner.changes.empty());
    for (const float value : {1e30f, kInf, -1e30f, 3.99f}) parameter.setValue(value, 0);
    EXPECT_EQ(owner.changes, (std::vector<RecordingOwner::Change>{{0, 5.0f, 0}, {0, 0.0f, 0}, {0, 3.0f, 0}}));
}

TEST(IndexedParameter, LooksMappedValuesUpBothWays) {
    constexpr int kTable[] = {0, 1, 3, 6};
    RecordingOwner owner;
    IndexedPluginParameter<int> parameter(owner, "P");
    parameter.setRange(2, 5, 2);
    parameter.setValueTable(kTable, 2);
    EXPECT_EQ(parameter.mappedOf(4), 3);
    EXPECT_EQ(parameter.mappedOf(-9), 0);
    EXPECT_EQ(parameter.mappedOf(99), 6);
    EXPECT_EQ(parameter.indexOf(6), 5);
    EXPECT_EQ(parameter.indexOf(77), 2);
    EXPECT_EQ(parameter.text(4.0f), "3");
    EXPECT_TRUE(parameter.isContinuous());
}

TEST(IndexedParameter, ReadsLabelsAndIndexes) {
    RecordingOwner owner;
    IndexedPluginParameter<int> parameter(owner, "P");
    parameter.setLabels("Off,2x,4x,off");
    parameter.setRange(0, 3, 1);
    EXPECT_FALSE(parameter.isContinuous());
    struct Case {
        const char* text;
        int index;  ///< -1: not understood
    };
    for (const Case& c : std::initializer_list<Case>{{"Off", 0},
                                                     {"off", 3},
                                                     {"OFF", 0},
                                                     {"4X", 2},
                                                     {" 3", 3},
                                                     {"+1", 1},
                                                     {"4", -1},
                                                     {"-1", -1},
                                                     {"", -1},
                                                     {"Of", -1},
                                                     {"99999999999", -1},
                                                     {"+-1", -1}}) {
        float out = -5.0f;
        EXPECT_EQ(parameter.parseText(c.text, &out), c.index >= 0) << c.text;
        EXPECT_EQ(out, c.index >= 0 ? static_cast<float>(c.index) : parameter.value()) << c.text;
    }
}

TEST(IndexedParameter, ZonesNarrowTheRangeToTheSteps) {
    RecordingOwner owner;
    IndexedPluginParameter<int> parameter(owner, "P");
    parameter.setRange(0, 20, 0);
    parameter.zones = {{5, 6}, {11, 12}};
    struct Case {
        int steps, low, high;
        bool first;
    };
    for (const Case& c : {Case{6, 0, 5, true}, Case{12, 5, 11, false}, Case{30, 11, 20, false}}) {
        float out = 0.0f;
        EXPECT_EQ(parameter.denormalizeZoned(0.0f, c.steps, &out), c.first) << c.steps;
        EXPECT_EQ(out, static_cast<float>(c.low));
        EXPECT_TRUE(parameter.denormalizeZoned(1.0f, c.steps, &out));
        EXPECT_EQ(out, static_cast<float>(c.high));
        EXPECT_EQ(parameter.normalizeZoned(static_cast<float>(c.high), c.steps), 1.0f);
        EXPECT_EQ(parameter.normalizeZoned(static_cast<float>(c.low), c.steps), 0.0f);
        EXPECT_EQ(parameter.normalizeZoned(20.0f, c.steps), c.high == 20 ? 1.0f : 0.0f);
    }
    EXPECT_EQ(parameter.zoneValue(12), 11);
    EXPECT_EQ(parameter.zoneValue(7), -1);
    parameter.zones.clear();
    EXPECT_EQ(parameter.normalizeZoned(5.0f, 6), 0.25f);
}

}  // namespace
}  // namespace vanta
