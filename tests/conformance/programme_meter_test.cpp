#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "dsp/metering/true_peak_judge.hpp"
#include "tests/conformance/metering_rig.hpp"

namespace vanta::test {
namespace {

TEST(ProgrammeMeter, GivesTheSameFiguresAtAnyBlockSize) {
    Channels channels{pinkNoise(1, 48000 * 6), pinkNoise(2, 48000 * 6)};
    const auto whole = measure(channels, kStereoLayout, kRate, 1 << 20);
    for (const std::size_t block : {1u, 7u, 255u, 256u, 1000u}) {
        const auto split = measure(channels, kStereoLayout, kRate, block);
        EXPECT_EQ(split.figures.integrated, whole.figures.integrated) << block;
        EXPECT_EQ(split.figures.range, whole.figures.range) << block;
        EXPECT_EQ(split.figures.highestShortTerm->level, whole.figures.highestShortTerm->level) << block;
        EXPECT_EQ(split.figures.highestMomentary->seconds, whole.figures.highestMomentary->seconds) << block;
        EXPECT_EQ(split.figures.total.truePeak->level, whole.figures.total.truePeak->level) << block;
        EXPECT_EQ(split.timeline.size(), whole.timeline.size()) << block;
    }
}

TEST(ProgrammeMeter, SaysWhereTheExtremesLie) {
    Channels channels{Signal(48000 * 5), Signal(48000 * 5)};
    channels[1][100000] = -0.5f;
    const auto burst = sine(12000.0, kRate, 4800, 0.4, kPi / 4.0);
    std::copy(burst.begin(), burst.end(), channels[0].begin() + 200000);
    const auto [figures, timeline, notFinite] = measure(channels);
    EXPECT_NEAR(figures.total.samplePeak->seconds, 100000.0 / kRate, 1e-9);
    EXPECT_NEAR(figures.total.samplePeak->level, db(0.5), 1e-4);
    EXPECT_NEAR(figures.channels[0].truePeak->seconds, 202400.0 / kRate, 0.06);
    EXPECT_NEAR(figures.channels[0].truePeak->level, db(0.4), 0.3);
    EXPECT_NEAR(figures.channels[0].samplePeak->level, db(0.4 * std::sqrt(0.5)), 0.01);
    EXPECT_NEAR(figures.highestMomentary->seconds, 204800.0 / kRate, 0.3);
    ASSERT_EQ(timeline.size(), 50u);
    EXPECT_EQ(timeline[20].samplePeak, 0.5f) << "from 2.0 s to 2.1 s";
    EXPECT_EQ(timeline[19].samplePeak, 0.0f);
}

TEST(ProgrammeMeter, SeesThePeaksThatTheLimiterDoesNot) {
    // White noise is the worst for interpolators of finite length. The limiter's own finds nothing to object
    // to; what was rendered must not be judged by it.
    LimiterSetup setup{
        .style = LimitingStyle::Allround, .truePeak = true, .gainDb = 24.0f, .layout = kMonoLayout};
    const Signal out = limited(setup, {whiteNoise(3, 44100)})[0];
    const auto [figures, timeline, notFinite] = measure({out}, kMonoLayout, 44100.0);
    const double judged = valueOr(figures.total.truePeak);
    report("limited noise: judged {:.3f}, reference {:.3f}, by the limiter's own {:.3f} dBTP\n", judged,
           db(truePeak(out)), db(exposedPeak(out)));
    EXPECT_GT(judged, db(exposedPeak(out)) + 0.3);
    // The reference is flat somewhat further, to 0.49 of the rate instead of 0.48.
    EXPECT_LT(judged, db(truePeak(out)) + 0.05);
    float highest = 0.0f;
    for (const TimelinePoint& point : timeline) highest = std::max(highest, point.truePeak);
    EXPECT_NEAR(db(static_cast<double>(highest)), judged, 1e-3);
}

TEST(ProgrammeMeter, DoesNotGiveFiguresThatTheLengthDoesNotBear) {
    const auto brief = measure(stereo({{0.3, -20.0}})).figures;
    EXPECT_FALSE(brief.integrated);
    EXPECT_FALSE(brief.highestMomentary);
    EXPECT_FALSE(brief.range);
    EXPECT_NEAR(valueOr(brief.total.samplePeak), -20.0, 0.01);
    const auto middling = measure(stereo({{2.0, -20.0}})).figures;
    EXPECT_NEAR(middling.integrated.value_or(-999.0), -20.0, kLoudnessTolerance);
    EXPECT_FALSE(middling.highestShortTerm);
    EXPECT_FALSE(middling.range);
    const auto silent = measure({Signal(480000), Signal(480000)}).figures;
    EXPECT_FALSE(silent.integrated);
    EXPECT_FALSE(silent.total.truePeak);
    EXPECT_FALSE(silent.channels[1].rms);
    EXPECT_FALSE(silent.channels[1].samplePeak);
}

TEST(ProgrammeMeter, CountsWhatIsNoNumberAsSilence) {
    Channels channels = stereo({{5.0, -23.0}});
    channels[0][7000] = std::nanf("");
    channels[1][9000] = HUGE_VALF;
    const Measured measured = measure(channels);
    EXPECT_EQ(measured.notFinite, 2);
    EXPECT_NEAR(*measured.figures.integrated, -23.0, kLoudnessTolerance);
}

// The judge of written files against one that takes fifteen thousand multiplications a sample.
TEST(TruePeakJudge, FindsTheContinuousPeakToTheThousandth) {
    for (const double share : {0.01, 0.1, 0.25, 0.3, 0.4, 0.45, 0.47, 0.48}) {
        for (const double phase : {0.0, 0.3, 0.7, 1.1, 1.5}) {
            const auto signal = sine(share * kRate, kRate, 6000, 0.5, phase);
            TruePeakJudge judge;
            judge.process(signal.data(), signal.size());
            // The middle of a long tone: its ends ring.
            EXPECT_GE(db(judge.peak()), db(0.5) - 0.006) << share;
        }
    }
    for (std::uint64_t seed = 1; seed <= 4; ++seed) {
        // Next to nothing above the band that the judge is flat in.
        Signal noise = softened(pinkNoise(seed, 4000, 0.2));
        noise.insert(noise.end(), 300, 0.0f);
        TruePeakJudge judge;
        for (std::size_t at = 0; at < noise.size(); at += 100) judge.process(noise.data() + at, 100);
        judge.finish();
        const double expected = truePeak(noise);
        report("judge {:.4f}, reference {:.4f} dBTP\n", db(judge.peak()), db(expected));
        EXPECT_NEAR(db(judge.peak()), db(expected), 0.01) << seed;
        TruePeakJudge whole;
        whole.process(noise.data(), noise.size());
        whole.finish();
        EXPECT_EQ(judge.peak(), whole.peak());
        EXPECT_EQ(judge.position(), whole.position());
    }
}

TEST(TruePeakJudge, FindsAPeakInTheVeryLastSample) {
    const Signal end = impulse(300, 299);
    TruePeakJudge judge;
    judge.process(end.data(), end.size());
    judge.finish();
    EXPECT_NEAR(judge.peak(), 1.0, 1e-4);
    EXPECT_NEAR(judge.position(), 299.0, 0.01);
}

}  // namespace
}  // namespace vanta::test
