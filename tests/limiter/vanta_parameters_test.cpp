#include "limiter/vanta_parameters.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <limits>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "limiter/vanta_plugin.hpp"
#include "tests/plugin/recording_owner.hpp"
#include "tests/plugin/user_home.hpp"

namespace vanta {
namespace {

using test::RecordingOwner;

struct Table {
    explicit Table(int layout = 1) : owner(layout), parameters(owner) {}
    RecordingOwner owner;
    VantaParameters parameters;
};

struct Row {
    const char* name;
    float low, high;
    const char* initial;  ///< text of the default
    const char* last;     ///< text of the maximum
    bool automatable;
};

const Row kRows[] = {
    {"Gain", 0, 30, "0.00 dB", "+30.00 dB", true},
    {"Style", 0, 7, "Modern", "Safe", false},
    {"Lookahead", 0, 5, "0.20 ms", "5.00 ms", true},
    {"Attack", 0, 1, "250.0 ms", "10000.0 ms", true},
    {"Release", 0, 1, "500 ms", "10000 ms", true},
    {"Channel Link Transients", 0, 1, "100%", "100%", true},
    {"Channel Link Release", 0, 1, "100%", "100%", true},
    {"Channel Link Center", 0, 1, "Excluded", "Included", true},
    {"Channel Link LFE", 0, 1, "Excluded", "Included", true},
    {"Oversampling", 0, 5, "Off", "32x", false},
    {"True Peak Limiting", 0, 1, "On", "On", false},
    {"Dithering", 0, 5, "Off", "24 Bits", true},
    {"Noise Shaping", 0, 3, "Optimized", "Weighted", true},
    {"Filter DC Offset", 0, 1, "Off", "On", true},
    {"Side Chain Triggering", 0, 1, "Off", "On", true},
    {"Unity Gain", 0, 1, "Off", "On", false},
    {"Audition Limiting", 0, 1, "Off", "On", false},
    {"Bypass", 0, 1, "Not Bypassed", "Bypassed", true},
    {"Output Level", -30, 0, "0.00 dBTP", "0.00 dBTP", true},
    {"Lock Output", 0, 1, "Locked", "Locked", false},
    {"Receive Midi", 0, 1, "Enabled", "Disabled", true},
    {"Show Advanced", 0, 1, "Hide", "Show", false},
    {"True Peak Metering", 0, 1, "Show True Peaks", "Show True Peaks", false},
    {"Display Mode", 0, 4, "Slow Down", "Off", false},
    {"Meter Scale", 0, 6, "-48 dB", "Loudness", false},
    {"Loudness Time Scale", 0, 2, "Short Term", "Integrated", false},
    {"Loudness Meter Scale", 0, 1, "Target +9", "Target +18", false},
    {"Loudness Meter Origin", 0, 1, "Absolute", "Relative", false},
    {"Loudness Meter Target", -60, 0, "-23", "0", false},
    {"Loudness Integrated Peak Time Scale", 0, 1, "Max Momentary", "Max Short Term", false},
    {"Loudness Recording", 0, 1, "Recording", "Recording", false},
};

TEST(VantaParameters, StandInHostOrder) {
    Table table;
    ASSERT_EQ(table.owner.parameterCount(), VantaParameters::kParameterCount);
    std::set<std::string> helpTexts;
    for (int i = 0; i < VantaParameters::kParameterCount; ++i) {
        const Row& row = kRows[i];
        const AbstractPluginParameter& parameter = *table.owner.parameterAt(i);
        EXPECT_EQ(parameter.index(), i);
        EXPECT_EQ(parameter.name(), row.name);
        EXPECT_EQ(parameter.displayName, row.name);
        EXPECT_EQ(parameter.minimum(), row.low) << row.name;
        EXPECT_EQ(parameter.maximum(), row.high) << row.name;
        EXPECT_EQ(parameter.value(), parameter.defaultValue()) << row.name;
        EXPECT_EQ(parameter.text(parameter.defaultValue()), row.initial) << row.name;
        EXPECT_EQ(parameter.text(parameter.maximum()), row.last) << row.name;
        EXPECT_EQ(parameter.automatable, row.automatable) << row.name;
        EXPECT_GT(parameter.helpText.size(), 40u) << row.name;
        helpTexts.insert(parameter.helpText);
    }
    EXPECT_EQ(helpTexts.size(), static_cast<std::size_t>(VantaParameters::kParameterCount));
    EXPECT_TRUE(table.owner.changes.empty()) << "construction tells nobody";
    EXPECT_EQ(table.owner.bypassParameter, &table.parameters.bypass);
    EXPECT_EQ(table.owner.receiveMidiParameter, &table.parameters.receiveMidi);
    EXPECT_EQ(table.owner.gainReductionSource, 5);
    EXPECT_TRUE(table.owner.supportsSurround && table.owner.sideChainAvailable);
}

TEST(VantaParameters, AllLabelsReadBackInTheirOrder) {
    Table table;
    const std::vector<std::pair<int, std::string>> lists{
        {1, "Transparent,Punchy,Dynamic,Allround,Aggressive,Modern,Bus,Safe"},
        {9, "Off,2x,4x,8x,16x,32x"},
        {11, "Off,16 Bits,18 Bits,20 Bits,22 Bits,24 Bits"},
        {12, "None,Basic,Optimized,Weighted"},
        {23, "Slow Down,Fast,Slow,Infinite,Off"},
        {24, "-16 dB,-32 dB,-48 dB,K-12,K-14,K-20,Loudness"},
        {25, "Momentary,Short Term,Integrated"}};
    for (const auto& [index, labels] : lists) {
        std::string joined;
        const AbstractPluginParameter& parameter = *table.owner.parameterAt(index);
        for (float i = 0; i <= parameter.maximum(); ++i) joined += parameter.text(i) + ",";
        EXPECT_EQ(joined, labels + ",");
    }
}

/// Every index, or a fine grid over a continuous range.
std::vector<float> gridOf(const AbstractPluginParameter& parameter) {
    std::vector<float> values;
    const bool indexed = parameter.kind() == AbstractPluginParameter::Kind::Indexed;
    const int steps = indexed ? static_cast<int>(parameter.maximum() - parameter.minimum()) : 997;
    for (int i = 0; i <= steps; ++i) {
        const float share = static_cast<float>(i) / static_cast<float>(steps);
        values.push_back(indexed ? parameter.minimum() + static_cast<float>(i)
                                 : parameter.minimum() + share * (parameter.maximum() - parameter.minimum()));
    }
    return values;
}

TEST(VantaParameters, ValuesSurviveNormalisationAndTheirOwnText) {
    for (const int layout : {0, 1, 6}) {
        Table table(layout);
        for (int i = 0; i < VantaParameters::kParameterCount; ++i) {
            const AbstractPluginParameter& parameter = *table.owner.parameterAt(i);
            const bool indexed = parameter.kind() == AbstractPluginParameter::Kind::Indexed;
            const float tolerance = indexed ? 0.0f : 2e-7f * (parameter.maximum() - parameter.minimum());
            for (const float value : gridOf(parameter)) {
                const std::string text = parameter.text(value);
                const float back = parameter.denormalize(parameter.normalize(value));
                EXPECT_NEAR(back, value, tolerance) << parameter.name();
                float parsed = -99.0f;
                ASSERT_TRUE(parameter.parseText(text, &parsed)) << parameter.name() << " " << text;
                float again = -99.0f;
                ASSERT_TRUE(parameter.parseText(parameter.text(parsed), &again));
                EXPECT_NEAR(again, parsed, tolerance) << parameter.name() << " " << text;
                // Half of the last digit of the coarsest text, which shows whole milliseconds.
                const bool wholeText = dynamic_cast<const ChannelLinkParameter*>(&parameter) == nullptr;
                const float distance = parameter.toDisplay(parsed) - parameter.toDisplay(value);
                EXPECT_TRUE(!wholeText || std::abs(distance) <= 0.501f) << parameter.name() << " " << text;
                EXPECT_FALSE(parameter.exceedsRange(text)) << parameter.name() << " " << text;
                EXPECT_TRUE(!indexed || parsed == value) << parameter.name() << " " << text;
            }
            for (int length = 1; length < 24; ++length) {
                EXPECT_LE(parameter.text(parameter.maximum(), length).size(),
                          static_cast<std::size_t>(length));
            }
            EXPECT_EQ(parameter.text(parameter.minimum(), 0), parameter.text(parameter.minimum()));
        }
    }
}

TEST(VantaParameters, TimesFollowTheirCurves) {
    Table table;
    const auto& attack = table.parameters.attack;
    const auto& release = table.parameters.release;
    EXPECT_NEAR(attack.defaultValue(), 0.3976354f, 1e-6f);
    EXPECT_NEAR(release.defaultValue(), 0.4177430f, 1e-6f);
    EXPECT_NEAR(attack.engineValue(attack.defaultValue()), 0.25f, 1e-6f);
    EXPECT_NEAR(release.engineValue(0.9f), 5.0f, 1e-5f);
    EXPECT_NEAR(release.engineValue(1.0f), 10.0f, 1e-5f);
    float out = 0.0f;
    ASSERT_TRUE(attack.parseText("0.25 s", &out));
    EXPECT_NEAR(out, attack.defaultValue(), 1e-6f);
    ASSERT_TRUE(release.parseText("7.5 sec", &out));
    EXPECT_NEAR(out, 0.95f, 1e-6f);
}

struct Engine {
    Engine() { parameter.setRange(-60.0f, 0.0f, -18.0f); }
    RecordingOwner owner;
    FloatPluginParameter parameter{owner, "Main"};
};

TEST(VantaParameters, GainLowersTheThreshold) {
    Table table;
    Engine engine;
    table.parameters.gain.target = &engine.parameter;
    table.parameters.gain.setValue(0.0f, kFromHost);
    EXPECT_TRUE(table.owner.changes.empty());
    EXPECT_EQ(engine.owner.changes.back(), (RecordingOwner::Change{0, -0.001f, kFromHost}));
    table.parameters.gain.setValue(30.0f, 0);
    EXPECT_EQ(engine.parameter.value(), -30.0f);
    table.parameters.gain.setValue(45.0f, 0);
    EXPECT_EQ(engine.parameter.value(), -30.0f);
    table.parameters.gain.setValue(std::numeric_limits<float>::quiet_NaN(), 0);
    EXPECT_EQ(engine.parameter.value(), -30.0f);
    engine.parameter.setValue(-5.0f, 0);
    table.parameters.gain.setValue(30.0f, 0);
    EXPECT_EQ(engine.parameter.value(), -30.0f) << "written again although the knob stands still";
}

TEST(VantaParameters, LookaheadBecomesAShareOfItsRange) {
    Table table;
    Engine engine;
    engine.parameter.setRange(0.0f, 1.0f, 0.0f);
    table.parameters.lookahead.target = &engine.parameter;
    table.parameters.lookahead.setValue(2.0f, 0);
    EXPECT_FLOAT_EQ(engine.parameter.value(), 0.4f);
    table.parameters.lookahead.setValue(9.0f, 0);
    EXPECT_EQ(engine.parameter.value(), 1.0f);
}

TEST(ChannelLink, SpeaksOfPairsAndAllChannelsInSurroundLayouts) {
    struct Case {
        int layout;
        bool center, lfe;
        float value;
        const char* text;
    };
    for (const Case& c : std::initializer_list<Case>{{0, true, true, 0.25f, "50%"},
                                                     {1, true, true, 0.75f, "100%"},
                                                     {1, false, false, 0.0f, "0%"},
                                                     {2, false, false, 0.25f, "50% Stereo"},
                                                     {6, true, false, 0.25f, "50% Stereo+C"},
                                                     {6, true, true, 0.5f, "100% Stereo+C"},
                                                     {6, false, false, 0.75f, "100% Stereo, 50% All"},
                                                     {6, true, true, 0.75f, "100% Stereo+C, 50% All+LFE"},
                                                     {6, false, true, 1.0f, "100% Stereo, 100% All+LFE"}}) {
        Table table(c.layout);
        table.parameters.channelLinkCenter.setMapped(c.center);
        table.parameters.channelLinkLfe.setMapped(c.lfe);
        EXPECT_EQ(table.parameters.channelLinkTransients.text(c.value), c.text);
        EXPECT_EQ(table.parameters.channelLinkRelease.text(c.value), c.text);
    }
}

TEST(ChannelLink, ShortensByWhatIsLeastMissed) {
    Table table(6);
    table.parameters.channelLinkCenter.setMapped(true);
    table.parameters.channelLinkLfe.setMapped(true);
    const auto& link = table.parameters.channelLinkTransients;
    const std::vector<std::pair<int, std::string>> texts{{26, "100% Stereo+C, 50% All+LFE"},
                                                         {25, "100% Stereo, 50% All+LFE"},
                                                         {20, "100% Stereo, 50% All"},
                                                         {13, "100%, 50% All"},
                                                         {10, "100%, 50%A"},
                                                         {8, "100, 50A"},
                                                         {7, "100,50A"},
                                                         {6, "50A"},
                                                         {2, "50"}};
    for (const auto& [length, expected] : texts) EXPECT_EQ(link.text(0.75f, length), expected) << length;
}

TEST(ChannelLink, ReadsAllItsForms) {
    Table table(6);
    const auto& link = table.parameters.channelLinkTransients;
    const std::vector<std::pair<std::string, float>> texts{
        {"50% Stereo", 0.25f}, {"50", 0.25f},     {"100% Stereo, 50% All", 0.75f},      {"50A", 0.75f},
        {"50 % all", 0.75f},   {"100,50", 0.75f}, {"100% Stereo+C, 20% All+LFE", 0.6f}, {"250%", 1.0f},
        {"-10%", 0.0f},        {" 100 %", 0.5f}};
    for (const auto& [text, expected] : texts) {
        float out = -1.0f;
        EXPECT_TRUE(link.parseText(text, &out)) << text;
        EXPECT_FLOAT_EQ(out, expected) << text;
    }
    float out = -1.0f;
    for (const char* text : {"A", "", "100,", "Stereo", "nan"})
        EXPECT_FALSE(link.parseText(text, &out)) << text;
    EXPECT_EQ(out, -1.0f);
    EXPECT_TRUE(link.exceedsRange("250%"));
}

TEST(ChannelLink, HandsTheAmountToTheLinkersUnchanged) {
    Table table;
    auto& link = table.parameters.channelLinkRelease;
    LimitedProperty<float> first(nullptr, 0.0f, 1.0f, 1.0f);
    LimitedProperty<float> second(nullptr, 0.0f, 1.0f, 1.0f);
    link.addTarget(first);
    link.applyValue(0.3f);
    link.clearTargets();
    link.addTarget(second);
    link.applyValue(0.7f);
    EXPECT_EQ(first, 0.3f);
    EXPECT_EQ(second, 0.7f);
}

TEST(OutputLevel, IsNamedByTruePeakLimitingAndTypedInEither) {
    Table table;
    auto& level = table.parameters.outputLevel;
    for (const bool truePeak : {false, true}) {
        table.parameters.truePeakLimiting.setMapped(truePeak);
        EXPECT_EQ(level.text(-1.0f), truePeak ? "-1.00 dBTP" : "-1.00 dB");
        const std::vector<std::pair<std::string, float>> texts{
            {"-1 dB", -1.0f}, {"-1dBTP", -1.0f}, {"1", -1.0f},   {"0.5x", -6.0206f},
            {"2x", 0.0f},     {"-INF", -30.0f},  {"-0,5", -0.5f}};
        for (const auto& [text, expected] : texts) {
            float out = 1.0f;
            EXPECT_TRUE(level.parseText(text, &out)) << text;
            EXPECT_NEAR(out, expected, 1e-4f) << text;
        }
    }
}

TEST(OutputLevel, IsNamedAndTypedWhileAnotherThreadSwitchesTruePeakLimiting) {
    const test::UserHome home;
    VantaPlugin plugin(kStereoLayout);
    const auto& level = plugin.outputLevel;
    std::atomic<bool> done = false;
    std::thread other([&] {
        for (int i = 0; i < 5000; ++i) plugin.truePeakLimiting.setMapped(i % 2 == 0);
        done = true;
    });
    std::set<std::string> seen;
    int refused = 0;
    float typed = 0.0f;
    while (!done) {
        seen.insert(level.text(-1.0f));
        refused += !level.parseText("-2 dBTP", &typed);
    }
    other.join();
    seen.insert(level.text(-1.0f));
    EXPECT_EQ(refused, 0);
    for (const std::string& text : seen) EXPECT_TRUE(text == "-1.00 dB" || text == "-1.00 dBTP") << text;
}

TEST(VantaParameters, SwitchesDriveSelectorsAndCells) {
    Table table;
    Property<int> selected(nullptr, 0);
    Property<bool> enabled(nullptr, false);
    Property<int> shaping(nullptr, 0);
    table.parameters.sideChainTriggering.addTarget(selected);
    table.parameters.filterDcOffset.addTarget(enabled);
    table.parameters.noiseShaping.addTarget(shaping);
    table.parameters.sideChainTriggering.applyValue(1.0f);
    table.parameters.filterDcOffset.applyValue(1.0f);
    table.parameters.noiseShaping.applyValue(3.0f);
    EXPECT_EQ(selected, 1);
    EXPECT_TRUE(enabled);
    EXPECT_EQ(shaping, static_cast<int>(DitherFilter::Weighted));
}

}  // namespace
}  // namespace vanta
