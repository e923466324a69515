#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

#include "tests/conformance/program_material.hpp"
#include "tests/support/limiter_rig.hpp"

namespace vanta::test {
namespace {

LimiterSetup hot(Style style, double rate, int oversamplingIndex) {
    return {.style = style,
            .oversamplingIndex = oversamplingIndex,
            .truePeak = oversamplingIndex > 0,
            .gainDb = 14.0f,
            .rate = rate};
}

const std::vector<LimiterSetup>& setups() {
    static const std::vector<LimiterSetup> all = {
        hot(Style::Modern, 44100.0, 0), hot(Style::Dynamic, 96000.0, 1), hot(Style::Modern, 44100.0, 1),
        hot(Style::Safe, 48000.0, 0),   hot(Style::Bus, 44100.0, 2),
    };
    return all;
}

void expectEachAsAlone(const std::vector<Channels>& outputs, const Channels& music) {
    for (std::size_t i = 0; i < setups().size(); ++i) {
        EXPECT_EQ(outputs[i], LimiterRig(setups()[i]).process(music, 200)) << describe(setups()[i]);
    }
}

TEST(Instances, ThatTakeTurnsDoNotHearEachOther) {
    const Channels music = loudMusic(0.4);
    std::vector<std::unique_ptr<LimiterRig>> rigs;
    std::vector<Channels> outputs;
    for (const LimiterSetup& setup : setups()) {
        rigs.push_back(std::make_unique<LimiterRig>(setup));
        outputs.emplace_back(2, Signal(music[0].size()));
    }
    for (std::size_t at = 0; at < music[0].size(); at += 200) {
        const std::size_t count = std::min<std::size_t>(200, music[0].size() - at);
        for (std::size_t i = 0; i < rigs.size(); ++i) rigs[i]->processBlock(music, {}, outputs[i], at, count);
        // One that comes and goes in between, with settings of its own.
        if (at % 4000 == 0) LimiterRig(hot(Style::Allround, 88200.0, 1)).process({Signal(300), Signal(300)});
    }
    expectEachAsAlone(outputs, music);
}

TEST(Instances, OnThreadsOfTheirOwnDoNotHearEachOther) {
    const Channels music = loudMusic(0.3);
    std::vector<Channels> outputs(setups().size());
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < setups().size(); ++i) {
        threads.emplace_back([&, i] { outputs[i] = LimiterRig(setups()[i]).process(music, 200); });
    }
    for (std::thread& thread : threads) thread.join();
    expectEachAsAlone(outputs, music);
}

}  // namespace
}  // namespace vanta::test
