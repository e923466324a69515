#include "host/common/hosted_plugin.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "host/unified/host_position.hpp"
#include "limiter/model/vanta_plugin.hpp"
#include "tests/plugin/user_home.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

/// Writes down what it is told.
class Ear final : public HostCallbacks {
public:
    void parameterEdited(int index, Edit, float value) override {
        told.push_back(std::to_string(index) + "=" + std::to_string(value));
    }
    void beginEdits() override { told.emplace_back("("); }
    void endEdits() override { told.emplace_back(")"); }
    void stateRestored() override { told.emplace_back("restored"); }
    void latencyChanged() override { told.emplace_back("latency"); }
    void pumpRequested() override { ++pumps; }

    std::vector<std::string> told;
    int pumps = 0;
};

class Events final : public HostEventSource {
public:
    explicit Events(std::vector<HostEvent> events = {}) : events_(std::move(events)) {}
    bool next(HostEvent& event) override {
        if (next_ == events_.size()) return false;
        event = events_[next_++];
        return true;
    }

private:
    std::vector<HostEvent> events_;
    std::size_t next_ = 0;
};

HostEvent controller(int offset, int number, int value) {
    HostEvent event;
    event.offset = offset;
    event.kind = HostEvent::Kind::Midi;
    event.midi = {0xB0, static_cast<std::uint8_t>(number), static_cast<std::uint8_t>(value)};
    return event;
}

HostEvent change(int offset, int index, double value) {
    return {.offset = offset, .kind = HostEvent::Kind::Value, .index = index, .value = value, .midi = {}};
}

class HostedPluginTest : public testing::Test {
protected:
    static constexpr int kGain = 0;
    static constexpr int kBlock = 256;

    void SetUp() override {
        ASSERT_TRUE(plugin_.activate(48000, kBlock));
        host_.told.clear();
    }
    void block(std::vector<HostEvent> events) {
        Signal silence(kBlock);
        float* const channels[] = {silence.data(), nullptr};
        Events source(std::move(events));
        plugin_.process({.inputs = channels, .sideChain = {}, .outputs = channels, .samples = kBlock},
                        source);
    }
    double gain() { return plugin_.model().parameterAt(kGain)->value(); }
    double played() { return plugin_.processor().parameterAt(kGain)->value(); }

    const UserHome home_;
    Ear host_;
    HostedPlugin plugin_{host_, kStereoLayout};
};

TEST_F(HostedPluginTest, AControllerReachesTheHostOnceAndItsAnswerMovesNothing) {
    plugin_.model().statics().controllers.assign(20, kGain);
    block({controller(10, 20, 127)});
    EXPECT_EQ(host_.pumps, 1);
    plugin_.pump();
    EXPECT_THAT(host_.told, testing::ElementsAre("0=30.000000"));
    block({controller(10, 20, 0)});
    block({change(0, kGain, 30.0)});  // late, as through a host's queues
    plugin_.pump();
    plugin_.pump();
    EXPECT_EQ(gain(), 0.0);
    EXPECT_EQ(played(), 0.0);
    EXPECT_THAT(host_.told, testing::ElementsAre("0=30.000000", "0=0.000000"));
}

TEST_F(HostedPluginTest, WhatTheHostHasSetItselfIsNoNewsToIt) {
    block({change(100, kGain, 12.0), change(200, kGain, 13.0)});
    plugin_.hostPositionChanged(18, 0.5);
    plugin_.pump();
    EXPECT_EQ(gain(), 13.0);
    EXPECT_THAT(host_.told, testing::IsEmpty());
}

TEST_F(HostedPluginTest, AHostValueNextToTheModelsLeavesTheModelAlone) {
    plugin_.hostValueChanged(kGain, 10.0);
    const double near = 10.0 + 30.0 * 2.7e-5;
    block({change(0, kGain, near)});
    plugin_.pump();
    EXPECT_EQ(gain(), 10.0);
    EXPECT_FLOAT_EQ(static_cast<float>(played()), static_cast<float>(near));
    block({change(0, kGain, 10.0 + 30.0 * 2.9e-5)});
    plugin_.pump();
    EXPECT_NE(gain(), 10.0);
}

TEST_F(HostedPluginTest, AStateIsNoEditAndAPresetIsEditsThatBelongTogether) {
    plugin_.hostValueChanged(kGain, 7.0);
    const auto state = plugin_.saveState();
    plugin_.hostValueChanged(kGain, 3.0);
    host_.told.clear();
    ASSERT_TRUE(plugin_.restoreState(state));
    plugin_.pump();
    EXPECT_EQ(gain(), 7.0);
    EXPECT_EQ(std::ranges::count(host_.told, "restored"), 1);
    EXPECT_EQ(std::ranges::count(host_.told, "0=7.000000"), 0);

    plugin_.hostValueChanged(19, 0.0);  // unlocks the output
    host_.told.clear();
    const auto preset = plugin_.model().statics().findPreset("Club and Dance", false);
    ASSERT_TRUE(preset);
    ASSERT_TRUE(plugin_.model().loadPreset(*preset));
    plugin_.pump();
    ASSERT_THAT(host_.told, testing::SizeIs(testing::Gt(3u)));
    EXPECT_EQ(std::ranges::count(host_.told, "("), std::ranges::count(host_.told, ")"));
    EXPECT_EQ(std::ranges::count(host_.told, "0=" + std::to_string(static_cast<float>(gain()))), 1);
}

TEST_F(HostedPluginTest, AnotherLayoutKeepsValuesAndBothCompareSlots) {
    plugin_.model().interfaceOpened();
    plugin_.hostValueChanged(kGain, 5.0);
    plugin_.model().toggleCompare();
    plugin_.hostValueChanged(kGain, 8.0);
    plugin_.setLayout(6);
    ASSERT_TRUE(plugin_.activate(96000, 64));
    EXPECT_EQ(plugin_.channelCount(), 6);
    EXPECT_EQ(gain(), 8.0);
    EXPECT_EQ(played(), 8.0);
    plugin_.model().toggleCompare();
    EXPECT_EQ(gain(), 5.0);
}

TEST_F(HostedPluginTest, RatesBeyondTheSupportedOnesAreRefused) {
    for (const double rate : {0.0, -1.0, 7999.0, 768001.0, std::nan(""), 1e300}) {
        EXPECT_FALSE(plugin_.activate(rate, 64)) << rate;
    }
    for (const double rate : {8000.0, 44056.25, 768000.0}) {
        EXPECT_TRUE(plugin_.activate(rate, 64)) << rate;
        block({});
    }
}

}  // namespace
}  // namespace vanta::test
