#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <thread>
#include <vector>

#include "tests/support/limiter_rig.hpp"

namespace vanta::test {
namespace {

/// Runs `work(random)` on a thread of its own again and again for as long as this lives.
class Worker {
public:
    template <typename Work>
    Worker(std::uint64_t seed, Work work)
        : thread_([this, seed, work] {
              Random random(seed);
              while (!stop_.load()) work(random);
          }) {}
    ~Worker() {
        stop_ = true;
        thread_.join();
    }

private:
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

void moveSomething(VantaProcessor& limiter, Random& random) {
    AbstractPluginParameter& parameter = *limiter.parameterAt(random.between(0, 30));
    // Its trim of up to 30 dB comes after the ceiling and may run ahead of it.
    if (&parameter == &limiter.unityGain) return;
    const bool costly = &parameter == &limiter.oversampling;
    const auto normal = static_cast<float>(0.5 + 0.5 * random.bipolar());
    parameter.setValue(costly ? static_cast<float>(random.between(0, 1)) : parameter.denormalize(normal), 0);
    std::this_thread::yield();
}

TEST(Threads, MaySetEverythingWhileAudioRuns) {
    LimiterSetup setup{.gainDb = 12.0f};
    LimiterRig rig(setup);
    VantaProcessor& limiter = rig.limiter();
    const Channels noise = {whiteNoise(1, 30000), whiteNoise(2, 30000)};
    Channels out;
    {
        const Worker first(3, [&](Random& random) { moveSomething(limiter, random); });
        const Worker second(4, [&](Random& random) { moveSomething(limiter, random); });
        const Worker midi(5, [&](Random& random) {
            limiter.queueMidi(random.between(0, 300), 0xB0, 7,
                              static_cast<std::uint8_t>(random.between(0, 127)));
            std::this_thread::yield();
        });
        const Worker host(6, [&](Random&) {
            EXPECT_GE(limiter.latency(), 0);
            limiter.requestDiscontinuity();
            std::this_thread::yield();
        });
        out = rig.process(noise, 256);
    }
    // Whatever the moment, what is derived from several values is derived from those of one moment: the
    // highest ceiling holds.
    for (const Signal& signal : out) {
        ASSERT_TRUE(std::all_of(signal.begin(), signal.end(), [](float x) { return std::abs(x) <= 1.0f; }));
    }
}

/// What rests, and then hears noise, gives what one gives that had its style from the start.
void expectAsFresh(LimiterRig& rig, LimiterSetup setup, Style style) {
    setup.style = style;
    LimiterRig fresh(setup);
    const Channels noise = {pinkNoise(1, 20000, 0.2), pinkNoise(2, 20000, 0.2)};
    for (LimiterRig* each : {&rig, &fresh}) each->process(Channels(2, Signal(60000, 0.0f)), 256);
    EXPECT_LT(nullDb(rig.process(noise), fresh.process(noise)), -100.0) << nameOf(style);
}

TEST(Threads, ThatSetAStyleHandItOverWhole) {
    // A style is 749 values. Whatever the moment at which it was set, the limiter ends as one that had it
    // from the start.
    LimiterSetup setup{.gainDb = 12.0f};
    LimiterRig rig(setup);
    for (const Style last : {Style::Transparent, Style::Dynamic, Style::Aggressive, Style::Bus}) {
        {
            const Worker setter(static_cast<std::uint64_t>(last) + 10, [&](Random& random) {
                rig.limiter().style.setMapped(static_cast<Style>(random.between(0, kStyleCount - 1)));
            });
            for (int i = 0; i < 20; ++i) rig.process({Signal(300, 0.05f), Signal(300, 0.05f)}, 100);
        }
        rig.limiter().style.setMapped(last);
        expectAsFresh(rig, setup, last);
    }
}

TEST(Threads, ThatSetAStyleTakeNoKnobBack) {
    LimiterRig rig({});
    VantaProcessor& limiter = rig.limiter();
    int takenBack = 0;
    int apart = 0;
    for (int trial = 0; trial < 300; ++trial) {
        std::atomic<bool> turned{false};
        std::thread one([&] {
            for (int round = 0; round < 100; ++round) {
                const float place = 0.001f * static_cast<float>(round + trial);
                limiter.gain.setValue(30.0f * place, 0);
                limiter.lookahead.setValue(5.0f * place, 0);
                limiter.attack.setValue(place, 0);
                limiter.release.setValue(place, 0);
                takenBack += limiter.gain.value() != 30.0f * place || limiter.release.value() != place;
            }
            turned = true;
        });
        // A second hand at one of them: whoever comes last, the engine follows the knob.
        std::thread other([&] {
            for (int i = 0; !turned.load(); ++i) limiter.attack.setValue(i % 2 ? 0.9f : 0.8f, 0);
        });
        for (std::size_t i = 0; !turned.load(); ++i) limiter.style.setMapped(kStyles[i % kStyles.size()]);
        one.join();
        other.join();
        rig.process(Channels(2, Signal(16, 0.0f)));
        const float share = limiter.lookahead.normalize(limiter.lookahead.value());
        apart += limiter.gain.target->value() != -std::max(limiter.gain.value(), 0.001f) ||
                 limiter.lookahead.target->value() != share ||
                 limiter.attack.target->value() != limiter.attack.value() ||
                 limiter.release.target->value() != limiter.release.value();
    }
    EXPECT_EQ(takenBack, 0);
    EXPECT_EQ(apart, 0);
}

TEST(Threads, ThatSetMoreThanTheQueuesHoldLoseNothing) {
    // Nobody drains while a host sets and sets; what the queues have no room for counts as well.
    LimiterSetup setup{.gainDb = 12.0f};
    for (const Style last : {Style::Transparent, Style::Dynamic, Style::Bus}) {
        LimiterRig rig(setup);
        rig.process(Channels(2, Signal(30000, 0.0f)));
        Random random(23);
        for (int i = 0; i < 1500; ++i) {
            rig.limiter().style.setMapped(static_cast<Style>(random.between(0, kStyleCount - 1)));
        }
        rig.limiter().style.setMapped(last);
        expectAsFresh(rig, setup, last);
    }
}

TEST(Threads, ThatOpenABlockOfChangesSeeItTakenUpAtOnce) {
    // Two values that are only ever set together are never heard apart: audio that is not limited keeps its
    // level.
    LimiterSetup setup{.outputLevelDb = -20.0f, .layout = kMonoLayout};
    LimiterRig rig(setup);
    VantaProcessor& limiter = rig.limiter();
    const Signal tone(40000, 0.01f);
    rig.process(Channels{Signal(4096, 0.01f)}, 64);
    Signal out;
    {
        const Worker setter(8, [&](Random& random) {
            const auto gain = static_cast<float>(random.between(0, 20));
            limiter.beginChange();
            limiter.gain.setValue(gain, 0);
            std::this_thread::yield();
            limiter.outputLevel.setValue(-20.0f - gain / 2.0f, 0);
            limiter.endChange();
            // As fast as a host's automation goes, not so fast that the queue overflows.
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        });
        out = rig.process({tone}, 64)[0];
    }
    // Gain g and Output Level -20 - g/2 give -20 + g/2 together: never above -10, never below -20 dB.
    for (std::size_t i = 0; i < out.size(); ++i) {
        ASSERT_LT(db(static_cast<double>(out[i])), -50.0 + 0.1) << i;
        ASSERT_GT(db(static_cast<double>(out[i])), -60.0 - 0.1) << i;
    }
}

}  // namespace
}  // namespace vanta::test
