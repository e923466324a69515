#include <gtest/gtest.h>

#include <bit>
#include <limits>

#include "plugin/model/session_state.hpp"
#include "tests/plugin/preset_bytes.hpp"
#include "tests/plugin/test_plugin.hpp"

namespace vanta::test {
namespace {

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

TEST(SessionState, HasTheDocumentedLayout) {
    TestPlugin plugin;
    plugin.level.setValue(std::bit_cast<float>(0x40490fdbu), 0);
    plugin.mode.setValue(4.0f, 0);
    plugin.setPresetName("Mine");
    std::string expected = stateOf(plugin.level.value(), 0.0f, 2, 0, "Mine");
    expected[12 + 4 * 8] = 1;  // the preset is modified
    EXPECT_EQ(writeSessionState(plugin), asBytes(expected));
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

TEST(SessionState, BringsValuesIntoRangeAlsoOfTheSlotThatIsNotInUse) {
    const auto record = [](float level, float balance, int mode, int view) {
        const std::string state = stateOf(level, balance, mode, view, "");
        return state.substr(8, state.size() - 8 - 3 * 4);
    };
    std::string state = stateOf(std::numeric_limits<float>::quiet_NaN(), -1e30f, 0x7fffffff, -5, "");
    state.replace(state.size() - 4, 4, std::string("\1\0\0\0", 4));  // the slots are filled
    state += record(5.0f, 0.5f, 1, 2) + record(1e30f, -1e30f, 0x7fffffff, -0x7fffffff);
    TestPlugin plugin;
    ASSERT_TRUE(readSessionState(plugin, asBytes(state)));
    EXPECT_EQ(plugin.parameterValues(), (std::vector<float>{1.0f, -1.0f, 5.0f, 0.0f}));
    plugin.toggleCompare();
    EXPECT_EQ(plugin.parameterValues(), (std::vector<float>{10.0f, -1.0f, 5.0f, 0.0f}));
}

}  // namespace
}  // namespace vanta::test
