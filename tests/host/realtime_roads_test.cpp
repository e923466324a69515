#include <gtest/gtest.h>

#include "limiter/model/vanta_plugin.hpp"
#include "tests/host/in_process_host.hpp"
#include "tests/plugin/user_home.hpp"
#include "tests/support/realtime_trap.hpp"

namespace vanta::test {
namespace {

constexpr int kBlock = 128;

TEST(RealtimeRoads, WhatStartsOnTheAudioThreadLeavesTheSystemAlone) {
    const UserHome home;
    InProcessHost host;
    auto& table = dynamic_cast<VantaPlugin&>(host.model());
    host.model().statics().controllers.assign(20, table.gain.index());
    host.model().statics().controllers.assign(21, table.attack.index());
    host.model().statics().settings.enableMidiProgramChanges = true;
    std::vector<float> samples(2 * kBlock, 0.25f);
    float* outputs[] = {samples.data(), samples.data() + kBlock};
    const float* inputs[] = {outputs[0], outputs[1]};
    const auto play = [&](int round) {
        const RealtimeScope realtime;
        host.sendMidi(3, {0xB0, 20, static_cast<std::uint8_t>(round % 128)});
        host.sendMidi(60, {0xB0, 21, static_cast<std::uint8_t>(round % 100)});
        host.sendMidi(90, {0xC0, static_cast<std::uint8_t>(round % 50), 0});
        host.automate(table.outputLevel.index(), -0.01 * round);
        host.automate(table.channelLinkTransients.index(), 0.005 * round);
        host.process(inputs, outputs, kBlock);
    };
    for (int round = 0; round < 40; ++round) play(round);
    host.idle();  // loads presets, and with them another oversampling, for which the next block builds
    for (int round = 0; round < 40; ++round) play(round);

    RealtimeTrap trap;
    for (int round = 0; round < 200; ++round) play(round);  // nobody pumps: what fills up is dropped
    EXPECT_EQ(trap.total(), 0) << trap.report();
}

}  // namespace
}  // namespace vanta::test
