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
    // The reference is flat to 0.49 of the rate; above that lies a fiftieth of white noise.
    EXPECT_NEAR(judged, db(truePeak(out)), 0.3);
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

double judgedPeak(const Signal& signal) {
    TruePeakJudge judge;
    judge.process(signal.data(), signal.size());
    judge.finish();
    return db(judge.peak());
}

/// The sum over all samples that a bandlimited signal is, at a time in samples (Whittaker).
double continuousAt(const Signal& signal, double time) {
    double sum = 0.0;
    for (std::size_t i = 0; i < signal.size(); ++i) {
        const double t = time - static_cast<double>(i);
        sum += static_cast<double>(signal[i]) * (t == 0.0 ? 1.0 : std::sin(kPi * t) / (kPi * t));
    }
    return std::abs(sum);
}

/// The highest of 32 points a sample near each place that adds up to much, straight from the definition.
double definedPeak(const Signal& signal) {
    double highest = 0.0;
    for (std::size_t i = 0; i + 1 < signal.size(); ++i) {
        if (continuousAt(signal, static_cast<double>(i) + 0.5) < 0.7 * highest) continue;
        for (int k = 0; k < 32; ++k)
            highest = std::max(highest, continuousAt(signal, static_cast<double>(i) + k / 32.0));
    }
    return db(highest);
}

TEST(TruePeakJudge, IsFlatUpToTheEdgeOfTheBand) {
    for (const double share : {0.01, 0.1, 0.25, 0.3, 0.4, 0.45, 0.48, 0.49, 0.4999}) {
        for (const double phase : {0.0, 0.7, 1.5}) {
            Signal tone = sine(share * kRate, kRate, 60000, 0.5, phase);
            for (std::size_t i = 0; i < tone.size(); ++i) {
                const double place =
                    std::sin(kPi * static_cast<double>(i) / static_cast<double>(tone.size()));
                tone[i] = static_cast<float>(static_cast<double>(tone[i]) * place * place);
            }
            EXPECT_NEAR(judgedPeak(tone), db(0.5), 0.006) << share;
        }
    }
}

// What is worst for interpolators of finite length: signs that follow no rule, signs that all add up between
// two samples, and the clipped noise of drums.
TEST(TruePeakJudge, FindsThePeaksThatLieCloseToNyquist) {
    Signal signs = whiteNoise(5, 6000);
    for (float& x : signs) x = x < 0.0f ? -1.0f : 1.0f;
    Signal worst(6000);
    for (std::size_t i = 0; i < worst.size(); ++i) {
        const bool first = i < worst.size() / 2;
        worst[i] = (i % 2 == 0) == first ? 0.5f : -0.5f;
    }
    Signal drums = whiteNoise(6, 6000);
    for (std::size_t i = 0; i < drums.size(); ++i) {
        const double fall = 8.0 * std::exp(-static_cast<double>(i % 1000) / 60.0);
        drums[i] = static_cast<float>(std::clamp(static_cast<double>(drums[i]) * fall, -1.0, 1.0));
    }
    for (const Signal& signal : {signs, worst, drums, softened(pinkNoise(1, 4000, 0.2))}) {
        const double expected = definedPeak(signal);
        report("judged {:.4f}, by definition {:.4f} dBTP\n", judgedPeak(signal), expected);
        EXPECT_NEAR(judgedPeak(signal), expected, 0.006);
    }
}

TEST(TruePeakJudge, TellsTheSameOfAStreamInPieces) {
    const Signal noise = pinkNoise(4, 9000, 0.2);
    TruePeakJudge whole(1000);
    whole.process(noise.data(), noise.size());
    whole.finish();
    TruePeakJudge pieces(1000);
    for (std::size_t at = 0; at < noise.size(); at += 90) pieces.process(noise.data() + at, 90);
    pieces.finish();
    EXPECT_EQ(pieces.peak(), whole.peak());
    EXPECT_EQ(pieces.position(), whole.position());
    ASSERT_EQ(whole.segmentPeaks().size(), 9u);
    EXPECT_TRUE(std::ranges::equal(pieces.segmentPeaks(), whole.segmentPeaks()));
    // Each segment's peak is the one that a look at it alone would find, and no less than its samples.
    for (std::size_t s = 0; s < 9; ++s) {
        Signal part(noise.size());
        std::copy_n(noise.begin() + static_cast<std::ptrdiff_t>(s * 1000), 1000,
                    part.begin() + static_cast<std::ptrdiff_t>(s * 1000));
        EXPECT_NEAR(db(static_cast<double>(whole.segmentPeaks()[s])), judgedPeak(part), 0.5) << s;
    }
    EXPECT_EQ(static_cast<double>(std::ranges::max(whole.segmentPeaks())), static_cast<float>(whole.peak()));
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
