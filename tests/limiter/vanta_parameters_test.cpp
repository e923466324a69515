#include "limiter/parameters/vanta_parameters.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <set>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "limiter/model/vanta_plugin.hpp"
#include "tests/plugin/recording_owner.hpp"
#include "tests/plugin/user_home.hpp"

namespace vanta::test {
namespace {

struct Table {
    explicit Table(int layout = 1) : owner(layout), parameters(owner) {}
    RecordingOwner owner;
    VantaParameters parameters;
};

TEST(VantaParameters, AreExplainedEachInItsOwnWords) {
    Table table;
    std::set<std::string> texts;
    for (int i = 0; i < VantaParameters::kParameterCount; ++i) {
        const ParameterRow& row = kParameterTable[static_cast<std::size_t>(i)];
        const std::string& help = table.owner.parameterAt(i)->helpText;
        EXPECT_TRUE(row.summary.size() > 10 && row.summary.size() < 70) << row.name;
        EXPECT_TRUE(help.size() > 40 && help.ends_with('.')) << row.name;
        EXPECT_EQ(help.find_first_of("\n#"), std::string::npos) << row.name;
        texts.insert(help);
        texts.emplace(row.summary);
    }
    EXPECT_EQ(texts.size(), 2 * kParameterTable.size()) << "no text stands for two";
}

TEST(VantaParameters, StartAtTheirDefaultsAndTellNobody) {
    Table table;
    for (int i = 0; i < VantaParameters::kParameterCount; ++i) {
        const AbstractPluginParameter& parameter = *table.owner.parameterAt(i);
        EXPECT_EQ(parameter.value(), parameter.defaultValue()) << parameter.name();
        EXPECT_NEAR(parameter.toDisplay(parameter.defaultValue()),
                    kParameterTable[static_cast<std::size_t>(i)].values.initial, 1e-4f);
    }
    EXPECT_TRUE(table.owner.changes.empty());
}

TEST(VantaParameters, InterfaceDefaultsKeepTheOrderOfTheirFile) {
    std::vector<int> indexes;
    const Table table;
    for (const auto* parameter : table.parameters.parametersWith(&ParameterRow::followsInterface)) {
        indexes.push_back(parameter->index());
    }
    EXPECT_THAT(indexes, testing::ElementsAre(19, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30));
}

TEST(VantaParameters, HelpOfLockOutputNamesWhatItKeeps) {
    Table table;
    for (const ParameterRow& row : kParameterTable) {
        const bool named = table.parameters.lockOutput.helpText.find(row.name) != std::string::npos;
        EXPECT_EQ(named, row.keptByLockOutput) << row.name;
    }
}

TEST(VantaParameters, LastEnumeratorsReadAsTheLastLabels) {
    using P = VantaParameters;
    Table table;
    const auto lastIs = [](const auto& parameter, auto last, const std::string& label) {
        EXPECT_EQ(parameter.engineValue(parameter.maximum()), last) << label;
        EXPECT_EQ(parameter.text(parameter.maximum()), label);
    };
    lastIs(table.parameters.oversampling, P::OversamplingMode::X32, "32x");
    lastIs(table.parameters.dithering, P::Dithering::Bits24, "24 Bits");
    lastIs(table.parameters.noiseShaping, DitherFilter::Weighted, "Weighted");
    lastIs(table.parameters.receiveMidi, GenericPluginBase::MidiState::Disabled, "Disabled");
    lastIs(table.parameters.displayMode, P::DisplayMode::Off, "Off");
    lastIs(table.parameters.meterScale, P::MeterScale::Loudness, "Loudness");
    lastIs(table.parameters.loudnessTimeScale, P::LoudnessTimeScale::Integrated, "Integrated");
    lastIs(table.parameters.loudnessMeterScale, P::LoudnessMeterScale::Plus18, "Target +18");
    lastIs(table.parameters.loudnessMeterOrigin, P::LoudnessMeterOrigin::Relative, "Relative");
    lastIs(table.parameters.integratedPeakTimeScale, P::IntegratedPeakTimeScale::MaxShortTerm,
           "Max Short Term");
}

TEST(VantaParameters, ValuesSurviveNormalisationAndTheirOwnText) {
    constexpr int kPlaces = 997;
    for (const int layout : {0, 1, 6}) {
        Table table(layout);
        for (int i = 0; i < VantaParameters::kParameterCount; ++i) {
            const AbstractPluginParameter& parameter = *table.owner.parameterAt(i);
            const bool indexed = parameter.kind() == AbstractPluginParameter::Kind::Indexed;
            const bool wholeText = dynamic_cast<const ChannelLinkParameter*>(&parameter) == nullptr;
            const float tolerance = indexed ? 0.0f : 2e-7f * (parameter.maximum() - parameter.minimum());
            for (int place = 0; place <= kPlaces; ++place) {
                const float value = parameter.denormalize(static_cast<float>(place) / kPlaces);
                const std::string text = parameter.text(value);
                SCOPED_TRACE(parameter.name() + " " + text);
                EXPECT_NEAR(parameter.denormalize(parameter.normalize(value)), value, tolerance);
                float parsed = -99.0f, again = -99.0f;
                ASSERT_TRUE(parameter.parseText(text, &parsed));
                ASSERT_TRUE(parameter.parseText(parameter.text(parsed), &again));
                EXPECT_NEAR(again, parsed, tolerance);
                // Half of the last digit of the coarsest text, which shows whole milliseconds.
                const float distance = parameter.toDisplay(parsed) - parameter.toDisplay(value);
                EXPECT_TRUE(!wholeText || std::abs(distance) <= 0.501f);
                EXPECT_TRUE(!indexed || parsed == value);
                EXPECT_FALSE(parameter.exceedsRange(text));
            }
            for (std::size_t length = 1; length < 24; ++length) {
                EXPECT_LE(parameter.text(parameter.maximum(), static_cast<int>(length)).size(), length);
            }
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
    auto& gain = table.parameters.gain;
    gain.target = &engine.parameter;
    gain.setValue(30.0f, 0);
    EXPECT_TRUE(engine.owner.changes.empty()) << "not before it takes effect";
    gain.applyValue(0.0f);
    EXPECT_EQ(engine.owner.changes.back(), (RecordingOwner::Change{0, -0.001f, 0}));
    for (const float value : {30.0f, 45.0f}) {
        gain.applyValue(value);
        EXPECT_EQ(engine.parameter.value(), -30.0f);
    }
    engine.parameter.setValue(-5.0f, 0);
    gain.applyValue(30.0f);
    EXPECT_EQ(engine.parameter.value(), -30.0f) << "written again although the knob stands still";
}

TEST(VantaParameters, LookaheadBecomesAShareOfItsRange) {
    Table table;
    Engine engine;
    engine.parameter.setRange(0.0f, 1.0f, 0.0f);
    table.parameters.lookahead.target = &engine.parameter;
    table.parameters.lookahead.applyValue(2.0f);
    EXPECT_FLOAT_EQ(engine.parameter.value(), 0.4f);
    table.parameters.lookahead.applyValue(9.0f);
    EXPECT_EQ(engine.parameter.value(), 1.0f);
}

TEST(ChannelLink, SpeaksOfPairsAndAllChannelsInSurroundLayouts) {
    constexpr std::tuple<int, bool, bool, float, const char*> kCases[] = {
        {0, true, true, 0.25f, "50%"},
        {1, true, true, 0.75f, "100%"},
        {1, false, false, 0.0f, "0%"},
        {2, false, false, 0.25f, "50% Stereo"},
        {6, true, false, 0.25f, "50% Stereo+C"},
        {6, true, true, 0.5f, "100% Stereo+C"},
        {6, false, false, 0.75f, "100% Stereo, 50% All"},
        {6, true, true, 0.75f, "100% Stereo+C, 50% All+LFE"},
        {6, false, true, 1.0f, "100% Stereo, 100% All+LFE"}};
    for (const auto& [layout, center, lfe, value, text] : kCases) {
        Table table(layout);
        table.parameters.channelLinkCenter.setMapped(center);
        table.parameters.channelLinkLfe.setMapped(lfe);
        EXPECT_EQ(table.parameters.channelLinkTransients.text(value), text);
        EXPECT_EQ(table.parameters.channelLinkRelease.text(value), text);
    }
}

TEST(ChannelLink, ShortensByWhatIsLeastMissed) {
    Table table(6);
    table.parameters.channelLinkCenter.setMapped(true);
    table.parameters.channelLinkLfe.setMapped(true);
    const auto& link = table.parameters.channelLinkTransients;
    const std::pair<int, std::string> texts[] = {{26, "100% Stereo+C, 50% All+LFE"},
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

TEST(OutputLevel, IsNamedByTruePeakLimitingAndTypedInEither) {
    Table table;
    auto& level = table.parameters.outputLevel;
    for (const bool truePeak : {false, true}) {
        table.parameters.truePeakLimiting.setMapped(truePeak);
        EXPECT_EQ(level.text(-1.0f), truePeak ? "-1.00 dBTP" : "-1.00 dB");
        for (const char* typed : {"-0.5 dB", "-0.5dBTP", "-0,5", "0.5"}) {
            float out = 1.0f;
            EXPECT_TRUE(level.parseText(typed, &out) && out == -0.5f) << typed;
        }
    }
}

TEST(OutputLevel, IsNamedAndTypedWhileAnotherThreadSwitchesTruePeakLimiting) {
    const UserHome home;
    VantaPlugin plugin(kStereoLayout);
    const auto& level = plugin.outputLevel;
    std::atomic<bool> done = false;
    std::thread other([&] {
        for (int i = 0; i < 5000; ++i) plugin.truePeakLimiting.setMapped(i % 2 == 0);
        done = true;
    });
    std::set<std::string> seen{"-1.00 dB", "-1.00 dBTP"};
    int refused = 0;
    float typed = 0.0f;
    while (!done) {
        seen.insert(level.text(-1.0f));
        refused += !level.parseText("-2 dBTP", &typed);
    }
    other.join();
    EXPECT_EQ(refused, 0);
    EXPECT_EQ(seen.size(), 2u) << testing::PrintToString(seen);
}

}  // namespace
}  // namespace vanta::test
