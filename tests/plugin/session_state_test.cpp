#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <limits>
#include <random>

#include "plugin/model/session_state.hpp"
#include "tests/plugin/preset_bytes.hpp"
#include "tests/plugin/test_plugin.hpp"

namespace vanta {
namespace {

using test::Bytes;
using test::TestPlugin;

std::vector<std::byte> asBytes(const std::string& text) {
    const auto* first = reinterpret_cast<const std::byte*>(text.data());
    return {first, first + text.size()};
}

void putName(Bytes& bytes, const std::string& name) {
    for (std::size_t i = 0; i < 64; ++i) bytes.bytes.push_back(i < name.size() ? name[i] : '\0');
}

/// A state by the description of its format.
std::string stateOf(float level, float balance, int mode, int view, const std::string& name) {
    Bytes bytes;
    bytes.tag("QMSt").number(1).number(4);
    bytes.number(0).real(level).number(0).real(balance).number(1).number(mode).number(1).number(view);
    bytes.number(0);
    putName(bytes, name);
    bytes.number(0).number(0).number(0);
    return bytes.bytes;
}

bool inRange(const TestPlugin& plugin) {
    for (int i = 0; i < plugin.parameterCount(); ++i) {
        const AbstractPluginParameter& parameter = *plugin.parameterAt(i);
        const float value = parameter.value();
        if (!(value >= parameter.minimum() && value <= parameter.maximum())) return false;
    }
    return true;
}

TEST(SessionState, HasTheDocumentedLayout) {
    TestPlugin plugin;
    plugin.level.setValue(std::bit_cast<float>(0x40490fdbu), 0);
    plugin.mode.setValue(4.0f, 0);
    plugin.setPresetName("Mine");
    std::string expected = stateOf(plugin.level.value(), 0.0f, 2, 0, "Mine");
    expected[12 + 4 * 8] = 1;  // the preset is modified
    EXPECT_EQ(writeSessionState(plugin), asBytes(expected));
}

TEST(SessionState, BringsBackValuesNameAndBothSlots) {
    std::vector<std::byte> saved;
    std::vector<float> values;
    {
        TestPlugin plugin;
        plugin.interfaceOpened();
        plugin.level.setValue(3.3333333f, 0);
        plugin.takeSnapshot();
        plugin.toggleCompare();
        plugin.balance.setValue(-0.7777777f, 0);
        plugin.setPresetName("A name");
        values = plugin.parameterValues();
        saved = writeSessionState(plugin);
    }
    TestPlugin plugin;
    test::RecordingAdapter adapter;
    plugin.setAdapter(&adapter);
    ASSERT_TRUE(readSessionState(plugin, saved));
    EXPECT_EQ(plugin.parameterValues(), values);
    EXPECT_EQ(plugin.presetState().name(), "A name");
    EXPECT_EQ(adapter.updates, (std::vector<test::RecordingAdapter::Update>{{-1, true}}));
    EXPECT_EQ(plugin.compareStates().current(), 1);
    EXPECT_EQ(writeSessionState(plugin), saved);
    plugin.toggleCompare();
    EXPECT_EQ(plugin.level.value(), 3.3333333f);
    EXPECT_EQ(plugin.balance.value(), 0.0f);
}

TEST(SessionState, PassesOverWhatItDoesNotKnow) {
    TestPlugin plugin;
    EXPECT_TRUE(readSessionState(plugin, asBytes(stateOf(5.0f, 0.5f, 1, 2, "") + "and a tail")));
    EXPECT_EQ(plugin.parameterValues(), (std::vector<float>{5.0f, 0.5f, 3.0f, 2.0f}));

    // More values than there are parameters, and one of another type.
    Bytes bytes;
    bytes.tag("QMSt").number(7).number(6);
    bytes.number(1).number(9).number(0).real(-0.25f).number(1).number(0).number(5).number(1);
    bytes.number(0).real(1.0f).number(1).number(1).number(0);
    putName(bytes, "");
    bytes.number(0).number(0).number(0);
    EXPECT_TRUE(readSessionState(plugin, asBytes(bytes.bytes)));
    EXPECT_EQ(plugin.parameterValues(), (std::vector<float>{5.0f, -0.25f, 2.0f, 2.0f}));
}

TEST(SessionState, BringsValuesIntoRangeAndNumbersThatAreNoneToTheirDefault) {
    TestPlugin plugin;
    plugin.level.setValue(7.0f, 0);
    EXPECT_TRUE(readSessionState(
        plugin, asBytes(stateOf(std::numeric_limits<float>::quiet_NaN(), -1e30f, 0x7fffffff, -5, ""))));
    EXPECT_EQ(plugin.parameterValues(), (std::vector<float>{1.0f, -1.0f, 5.0f, 0.0f}));
}

TEST(SessionState, BringsValuesOfASlotThatIsNotInUseIntoRange) {
    const auto record = [](float level, float balance, int mode, int view) {
        const std::string state = stateOf(level, balance, mode, view, "");
        return state.substr(8, state.size() - 8 - 3 * 4);
    };
    std::string state = stateOf(5.0f, 0.5f, 1, 2, "");
    state.replace(state.size() - 4, 4, std::string("\1\0\0\0", 4));  // the slots are filled
    state += record(5.0f, 0.5f, 1, 2) + record(1e30f, -1e30f, 0x7fffffff, -0x7fffffff);
    TestPlugin plugin;
    ASSERT_TRUE(readSessionState(plugin, asBytes(state)));
    EXPECT_EQ(plugin.compareStates().state(1).values, (std::vector<float>{10.0f, -1.0f, 5.0f, 0.0f}));
    const auto stored = writeSessionState(plugin);
    plugin.toggleCompare();
    EXPECT_EQ(plugin.parameterValues(), (std::vector<float>{10.0f, -1.0f, 5.0f, 0.0f}));
    TestPlugin again;
    ASSERT_TRUE(readSessionState(again, stored));
    EXPECT_EQ(writeSessionState(again), stored);
}

TEST(SessionState, ChangesNothingUnlessItIsWhole) {
    TestPlugin source;
    source.interfaceOpened();
    source.level.setValue(9.0f, 0);
    const std::vector<std::byte> saved = writeSessionState(source);
    TestPlugin plugin;
    const std::vector<std::byte> before = writeSessionState(plugin);
    for (std::size_t length = 0; length < saved.size(); ++length) {
        ASSERT_FALSE(readSessionState(plugin, std::span(saved).first(length))) << length;
    }
    for (const int count : {-1, 1 << 30, std::numeric_limits<int>::max()}) {
        std::vector<std::byte> hostile = saved;
        std::memcpy(hostile.data() + 8, &count, 4);
        EXPECT_FALSE(readSessionState(plugin, hostile));
    }
    EXPECT_EQ(writeSessionState(plugin), before);
}

TEST(SessionState, SurvivesDamageAnywhere) {
    TestPlugin source;
    source.interfaceOpened();
    const std::vector<std::byte> saved = writeSessionState(source);
    TestPlugin plugin;
    std::mt19937 random(20);
    for (int round = 0; round < 5000; ++round) {
        std::vector<std::byte> damaged = saved;
        for (unsigned hits = 1 + random() % 8; hits > 0; --hits) {
            damaged[random() % damaged.size()] = static_cast<std::byte>(random());
        }
        readSessionState(plugin, damaged);
        plugin.toggleCompare();
        ASSERT_TRUE(inRange(plugin)) << "round " << round;
    }
}

}  // namespace
}  // namespace vanta
