#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

#include "tests/conformance/program_material.hpp"
#include "tests/support/limiter_rig.hpp"

namespace vanta::test {
namespace {

LimiterSetup hot(Style style, double rate, int oversamplingIndex) {
    LimiterSetup setup;
    setup.style = style;
    setup.rate = rate;
    setup.gainDb = 14.0f;
    setup.oversamplingIndex = oversamplingIndex;
    setup.truePeak = oversamplingIndex > 0;
    return setup;
}

const std::vector<LimiterSetup>& setups() {
    static const std::vector<LimiterSetup> all = {
        hot(Style::Modern, 44100.0, 0), hot(Style::Dynamic, 96000.0, 1), hot(Style::Modern, 44100.0, 1),
        hot(Style::Safe, 48000.0, 0),   hot(Style::Bus, 44100.0, 2),
    };
    return all;
}

TEST(Instances, thatTakeTurnsDoNotHearEachOther) {
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
    for (std::size_t i = 0; i < rigs.size(); ++i) {
        EXPECT_EQ(outputs[i], LimiterRig(setups()[i]).process(music, 200)) << describe(setups()[i]);
    }
}

TEST(Instances, onThreadsOfTheirOwnDoNotHearEachOther) {
    const Channels music = loudMusic(0.3);
    std::vector<Channels> outputs(setups().size());
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < setups().size(); ++i) {
        threads.emplace_back([&, i] { outputs[i] = LimiterRig(setups()[i]).process(music, 200); });
    }
    for (std::thread& thread : threads) thread.join();
    for (std::size_t i = 0; i < setups().size(); ++i) {
        EXPECT_EQ(outputs[i], LimiterRig(setups()[i]).process(music, 200)) << describe(setups()[i]);
    }
}

TEST(Instances, comeAndGo) {
    // Leaks are the sanitizer's to find.
    const Channels noise = {whiteNoise(1, 600), whiteNoise(2, 600)};
    for (int i = 0; i < 20; ++i) {
        LimiterSetup setup = hot(kStyles[static_cast<std::size_t>(i) % kStyles.size()], 44100.0, i % 3);
        setup.layout = i % kChannelLayoutCount;
        LimiterRig rig(setup);
        if (i % 2 == 0) rig.process(Channels(static_cast<std::size_t>(channelCount(setup.layout)), noise[0]));
    }
    std::vector<std::unique_ptr<LimiterRig>> together;
    for (const Style style : kStyles)
        together.push_back(std::make_unique<LimiterRig>(hot(style, 44100.0, 0)));
    const Channels reference = LimiterRig(hot(kStyles[0], 44100.0, 0)).process(noise);
    for (std::size_t i = together.size(); i-- > 1;) together.pop_back();
    EXPECT_EQ(together[0]->process(noise), reference);
}

}  // namespace
}  // namespace vanta::test
