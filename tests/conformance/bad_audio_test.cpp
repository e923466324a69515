#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "foundation/numbers.hpp"
#include "tests/conformance/program_material.hpp"
#include "tests/support/limiter_rig.hpp"

namespace vanta::test {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kLargest = 1048576.0f;  // 2^20, to which the door limits

class BadAudio : public testing::TestWithParam<Style> {
protected:
    LimiterSetup setup(int oversamplingIndex = 0, bool truePeak = false) const {
        return {.style = GetParam(),
                .oversamplingIndex = oversamplingIndex,
                .truePeak = truePeak,
                .gainDb = 12.0f};
    }
};

INSTANTIATE_TEST_SUITE_P(Styles, BadAudio, testing::ValuesIn(kStyles),
                         [](const auto& instance) { return nameOf(instance.param); });

struct Replacement {
    const char* name;
    float bad;
    float good;  ///< what counts instead
};
constexpr std::array kReplacements = {
    Replacement{"NaN", kNaN, 0.0f},
    Replacement{"negative NaN", -kNaN, 0.0f},
    Replacement{"infinity", kInfinity, 0.0f},
    Replacement{"minus infinity", -kInfinity, 0.0f},
    Replacement{"1e30", 1e30f, kLargest},
    Replacement{"-1e30", -1e30f, -kLargest},
    Replacement{"largest float", std::numeric_limits<float>::max(), kLargest},
};

Channels withBurst(Channels channels, float value) {
    for (std::size_t i = 5000; i < 5100; ++i) channels[0][i] = value;
    for (std::size_t i = 5050; i < 5051; ++i) channels[1][i] = value;
    return channels;
}

TEST_P(BadAudio, CountsAsWhatReplacesIt) {
    const Channels music = loudMusic(0.4);
    for (const bool bypassed : {false, true}) {
        for (const int index : {0, 1}) {
            for (const Replacement& r : kReplacements) {
                SCOPED_TRACE(fmt::format("{} at {}x{}", r.name, 1 << index, bypassed ? ", bypassed" : ""));
                LimiterSetup played = setup(index, index == 1);
                played.further = [=](VantaProcessor& limiter) { limiter.bypass.setMapped(bypassed); };
                const Channels out = LimiterRig(played).process(withBurst(music, r.bad));
                // Bit for bit; no NaN is equal to itself, so there is none either.
                EXPECT_TRUE(out == LimiterRig(played).process(withBurst(music, r.good)));
                if (!bypassed) {
                    EXPECT_LE(peak(out), 1.0);
                }
            }
        }
    }
}

TEST_P(BadAudio, IsForgottenAfterAPause) {
    // Even what is 120 dB too loud: once all levels have fallen, music comes out as it always does.
    const Channels music = loudMusic(0.4);
    LimiterSetup quick = setup();
    quick.further = [](VantaProcessor& limiter) {
        limiter.release.setValue(limiter.release.fromDisplay(50.0f), 0);
    };
    LimiterRig rig(quick);
    LimiterRig untouched(quick);
    rig.process(withBurst(music, 1e30f));
    untouched.process(music);
    const Channels pause(2, Signal(10 * 44100, 0.0f));
    rig.process(pause);
    untouched.process(pause);
    EXPECT_LT(nullDb(rig.process(music), untouched.process(music)), -100.0);
}

TEST_P(BadAudio, FromSilenceAndFromMissingInputsComesSilence) {
    // What lies beyond the inputs that the host counts is not looked at.
    const Channels silence(2, Signal(6 * 44100, 0.0f)), beyond(2, whiteNoise(1, 6 * 44100));
    for (const int count : {2, 0}) {
        const Channels& in = count ? silence : beyond;
        const float* inputs[] = {in[0].data(), in[1].data()};
        LimiterRig rig(setup(1, true));
        rig.process(loudMusic(0.3));
        Channels out = silence;
        float* outputs[] = {out[0].data(), out[1].data()};
        rig.limiter().processBlock(inputs, count, outputs, 2, static_cast<int>(out[0].size()));
        EXPECT_LE(peak(out), 1.0);
        EXPECT_EQ(peak(rig.process(Channels(2, Signal(4096, 0.0f)))), 0.0);
    }
}

TEST_P(BadAudio, DenormalsAreNoLouderThanTheyWere) {
    const float tiny = std::numeric_limits<float>::denorm_min() * 1000.0f;
    LimiterRig rig(setup(1, true));
    const Channels out = rig.process(Channels(2, Signal(20000, tiny)));
    EXPECT_LE(peak(out), 1e-30);
}

TEST_P(BadAudio, OffsetsAreHeldAndFiltered) {
    // A constant above the ceiling is limited like any other signal; the filter takes it away.
    constexpr std::size_t kCount = 3 * 44100;
    const Channels offset(2, Signal(kCount, 0.9f));
    const Channels out = LimiterRig(setup()).process(offset);
    EXPECT_LE(peak(out), 1.0);
    EXPECT_GT(db(static_cast<double>(out[0].back())), -1.5);

    LimiterSetup filtered = setup();
    filtered.further = [](VantaProcessor& limiter) { limiter.filterDcOffset.setMapped(true); };
    EXPECT_LT(std::abs(LimiterRig(filtered).process(offset)[0].back()), 1e-3);
}

}  // namespace
}  // namespace vanta::test
