#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "plugin/processor/processor_channel.hpp"
#include "tests/support/limiter_rig.hpp"

// An instance computes only what has not settled. Here one is told before every block that all may have
// changed, so that it computes everything, and is the judge of the other.
namespace vanta::test {
namespace {

/// Silence at first, sound, silence for longer than any window, faint sound with a single hit, sound.
Signal programme(unsigned seed) {
    Signal signal = pinkNoise(seed, 44100 * 13, 0.3);
    // The channels are hit in turn.
    const double hit = 10.0 + 0.1 * seed;
    for (std::size_t i = 0; i < signal.size(); ++i) {
        const double seconds = static_cast<double>(i) / 44100.0;
        const bool silent = seconds < 3.0 || (seconds > 4.0 && seconds < 9.0);
        const bool faint = seconds > 9.0 && seconds < 12.0 && std::abs(seconds - hit) > 0.002;
        signal[i] *= silent ? 0.0f : faint ? 0.01f : 1.0f;
    }
    return signal;
}

/// What a user does meanwhile, some of it in the silence.
void turnKnobs(VantaProcessor& limiter, std::size_t block) {
    switch (block) {
        case 1100:
            return limiter.gain.setValue(12.0f, 0);
        case 1200:
            return limiter.truePeakLimiting.setMapped(false);
        case 1300:
            return limiter.lookahead.setValue(2.0f, 0);
        case 1400:
            return limiter.truePeakLimiting.setMapped(true);
        case 1650:
            return limiter.auditionLimiting.setMapped(true);
        case 1800:
            return limiter.auditionLimiting.setMapped(false);
        default:
            return;
    }
}

class Rest : public testing::TestWithParam<Style> {};

TEST_P(Rest, ChangesNeitherSoundNorMeters) {
    for (const int oversampling : {0, 1}) {
        LimiterRig resting({GetParam(), oversampling, true, 9.0f});
        LimiterRig busy({GetParam(), oversampling, true, 9.0f});
        const Channels in{programme(1), programme(2)};
        constexpr std::size_t kBlock = 300;
        for (std::size_t block = 0; (block + 1) * kBlock <= in[0].size(); ++block) {
            Channels part;
            for (const Signal& channel : in) {
                part.emplace_back(channel.begin() + static_cast<std::ptrdiff_t>(block * kBlock),
                                  channel.begin() + static_cast<std::ptrdiff_t>((block + 1) * kBlock));
            }
            turnKnobs(resting.limiter(), block);
            turnKnobs(busy.limiter(), block);
            busy.limiter().environment().noteChange();
            ASSERT_EQ(resting.process(part, kBlock), busy.process(part, kBlock)) << "block " << block;
            const bool deepInSilence = block == 430;
            if (deepInSilence) {
                EXPECT_TRUE(resting.limiter().channels()[0]->output->isResting());
            }
            // A level is read once: reading is what lets it fall.
            const auto levels = resting.limiter().levels();
            for (std::size_t i = 3; i < levels.size(); ++i) {
                ASSERT_EQ(levels[i]->value(wave::LevelSource::Current),
                          busy.limiter().levels()[i]->value(wave::LevelSource::Current))
                    << "level " << i << ", block " << block;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Styles, Rest, testing::ValuesIn(kStyles),
                         [](const auto& instance) { return nameOf(instance.param); });

}  // namespace
}  // namespace vanta::test
