#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <numbers>
#include <vector>

#include "dsp/filter/crossover_filter.hpp"
#include "dsp/filter/eq_filter.hpp"
#include "limiter/engine/band_splitter.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

constexpr int kBlock = 256;
constexpr double kPi = std::numbers::pi;

using Rig = ElementRig<EQFilter>;

float octaves(double hz) {
    return static_cast<float>(std::log2(hz));
}

void tune(EQFilter& eq, int shape, int slope, double hz) {
    eq.coefficientCalculation = EQFilter::Bilinear;
    eq.shape = shape;
    eq.slope = slope;
    eq.frequency.parameter().setValue(octaves(hz), 0.0f);
}

/// The frequency of the prototype that the bilinear transform puts at `hz`, the cut-off being 1.
double warped(double hz, double cutoff, double rate) {
    return std::tan(kPi * hz / rate) / std::tan(kPi * cutoff / rate);
}

struct Case {
    int shape;
    int slope;
    int order;
    double cutoff;
    double gainDb;
};

// In closed form, with x the warped frequency to the power 2 N: a Butterworth low-pass is 1 / (1 + x), its
// mirror x / (1 + x), and a shelf whose zeros stand on a circle of radius g^(1/N) is (1 + g^2 x) / (1 + x).
double analyticDb(const Case& c, double hz, double rate) {
    const double x = std::pow(warped(hz, c.cutoff, rate), 2.0 * c.order);
    switch (c.shape) {
        case AnalogFilterPrototype::LowPass:
            return -10.0 * std::log10(1.0 + x);
        case AnalogFilterPrototype::HighPass:
            return 10.0 * std::log10(x / (1.0 + x));
        default:
            return 10.0 * std::log10((1.0 + std::pow(10.0, c.gainDb / 10.0) * x) / (1.0 + x));
    }
}

TEST(EQFilter, HasTheResponseOfItsPrototype) {
    using P = AnalogFilterPrototype;
    const Case cases[] = {
        {P::LowPass, EQFilter::Order1, 1, 1000, 0},   {P::LowPass, EQFilter::Order2, 2, 5000, 0},
        {P::LowPass, EQFilter::Order5, 5, 3000, 0},   {P::LowPass, EQFilter::Order16, 16, 4000, 0},
        {P::HighPass, EQFilter::Order1, 1, 300, 0},   {P::HighPass, EQFilter::Order3, 3, 1000, 0},
        {P::HighPass, EQFilter::Order4, 4, 2000, 0},  {P::HighPass, EQFilter::Order12, 12, 3000, 0},
        {P::HighShelf, EQFilter::Order1, 1, 2000, 6}, {P::HighShelf, EQFilter::Order2, 2, 3000, -12},
        {P::HighShelf, EQFilter::Order6, 6, 4000, 9},
    };
    for (const float rate : {44100.0f, 96000.0f}) {
        for (const Case& c : cases) {
            Rig rig(impulse(16384));
            rig.environment.setSampleRate(rate);
            tune(rig.element, c.shape, c.slope, c.cutoff);
            rig.element.gain.parameter().setValue(static_cast<float>(c.gainDb), 0.0f);
            const Signal response = rig.run(16384);
            for (const double hz : {150.0, 500.0, 1000.0, 2100.0, 4000.0, 7000.0, 15000.0}) {
                const double expected = analyticDb(c, hz, static_cast<double>(rate));
                if (expected < -100.0) continue;
                EXPECT_NEAR(db(std::abs(transformAt(response, hz / static_cast<double>(rate)))), expected,
                            0.02)
                    << "shape " << c.shape << " order " << c.order << " at " << hz << ", " << rate;
            }
        }
    }
}

TEST(EQFilter, ResonatesByItsQ) {
    for (const float q : {0.5f, 1.0f, 4.0f}) {
        Rig rig(impulse(16384));
        tune(rig.element, AnalogFilterPrototype::LowPass, EQFilter::Order2, 1000.0);
        rig.element.q.parameter().setValue(q, 0.0f);
        const Signal response = rig.run(16384);
        // At its cut-off a section of the second order passes its Q.
        EXPECT_NEAR(std::abs(transformAt(response, 1000.0 / 48000.0)),
                    static_cast<double>(q) * std::numbers::sqrt2 / 2.0, 1e-3);
    }
}

TEST(EQFilter, StaysStableAboveTheNyquistFrequency) {
    for (const int shape : {AnalogFilterPrototype::LowPass, AnalogFilterPrototype::HighPass}) {
        Rig rig(whiteNoise(1, 20000));
        rig.environment.setSampleRate(8000.0f);
        tune(rig.element, shape, EQFilter::Order8, 32000.0);
        const Signal out = rig.run(20000);
        EXPECT_LT(peak(out), 2.0);
    }
}

TEST(EQFilter, FadesInAndOutWhenSwitched) {
    const double rate = 48000.0;
    const int count = 6000;
    const Signal tone = sine(100.0, rate, 3 * count, 0.5);
    Rig rig(tone);
    tune(rig.element, AnalogFilterPrototype::HighPass, EQFilter::Order2, 4000.0);
    Signal out = rig.run(count);
    rig.element.enabled = false;
    const Signal off = rig.run(count, 60);
    EXPECT_EQ(&rig.element.current(), &rig.source.current()) << "no copy once it is off";
    out.insert(out.end(), off.begin(), off.end());
    rig.element.enabled = true;
    const Signal on = rig.run(count, 100);
    out.insert(out.end(), on.begin(), on.end());

    // 960 samples are 20 ms.
    for (std::size_t i = 960; i < off.size(); ++i) ASSERT_EQ(off[i], tone[count + i]);
    EXPECT_LT(std::abs(off[480]), 0.6f * std::abs(tone[count + 480]) + 0.01f);
    // The tone itself moves by 0.0065 a sample; 0.5 within 960 samples of fade add 0.0005.
    for (std::size_t i = 1; i < out.size(); ++i) ASSERT_LT(std::abs(out[i] - out[i - 1]), 0.008f) << i;
    EXPECT_LT(peak(std::span(on.data() + 4000, 2000)), 0.001);
}

// What a filter remembers must not sound when it comes back.
TEST(EQFilter, ComesBackWithoutItsOldTail) {
    Signal signal(20000);
    std::fill(signal.begin(), signal.begin() + 4000, 0.5f);
    Rig rig(signal);
    tune(rig.element, AnalogFilterPrototype::HighPass, EQFilter::Order1, 1.5);
    rig.run(4000);
    rig.element.enabled = false;
    rig.run(4000);
    rig.element.enabled = true;
    EXPECT_EQ(peak(rig.run(4000)), 0.0);
}

TEST(EQFilter, PreloadsItsStateWhereAsked) {
    Rig rig(Signal(2000, 0.5f));
    rig.element.processor.resetMode = BiquadProcessor::PreloadInput;
    tune(rig.element, AnalogFilterPrototype::LowPass, EQFilter::Order3, 100.0);
    rig.run(100);
    rig.element.slope = EQFilter::Order6;  // restarts the state
    const Signal out = rig.run(1000);
    EXPECT_EQ(rig.element.processor.sectionCount(), 3);
    for (const float x : out) ASSERT_NEAR(x, 0.5f, 1e-6f);
}

TEST(EQFilter, FadesAFlatShelfIntoTheDrySignal) {
    const Signal noise = whiteNoise(1, 1000, 0.5);
    Rig rig(noise);
    tune(rig.element, AnalogFilterPrototype::HighShelf, EQFilter::Order2, 3000.0);
    EXPECT_EQ(rig.run(512), Signal(noise.begin(), noise.begin() + 512));
    EXPECT_EQ(&rig.element.current(), &rig.source.current()) << "0 dB hands on the input block";

    // Just below the limit it is all but there, so nothing jumps at the limit.
    const auto shelved = [&](float db) {
        Rig fresh(noise);
        tune(fresh.element, AnalogFilterPrototype::HighShelf, EQFilter::Order2, 3000.0);
        fresh.element.gain.parameter().setValue(db, 0.0f);
        return fresh.run(1000);
    };
    EXPECT_LT(nullDb(shelved(0.0499f), shelved(0.0501f)), -90.0);
    EXPECT_GT(nullDb(shelved(0.03f), noise), -70.0);
}

// Steps in the coefficients would spread over the whole spectrum.
TEST(EQFilter, FollowsAutomationWithoutClicks) {
    const double rate = 48000.0;
    Rig rig(sine(500.0, rate, 32768, 0.5));
    tune(rig.element, AnalogFilterPrototype::LowPass, EQFilter::Order2, 8000.0);
    Signal out;
    const float targets[] = {octaves(700.0), octaves(8000.0), octaves(300.0), octaves(4000.0)};
    for (const float target : targets) {
        rig.element.frequency.parameter().setValue(target, 100.0f);
        const Signal part = rig.run(8192);
        out.insert(out.end(), part.begin(), part.end());
    }
    for (const double hz : {6000.0, 10000.0, 16000.0, 22000.0}) {
        EXPECT_LT(db(amplitudeAt(out, hz / rate)), -90.0) << hz;
    }
}

/// Low, high and all of a split, by CrossoverFilter's responses.
std::vector<Signal> split(int slope, double hz) {
    wave::Environment environment(kBlock);
    environment.setSampleRate(48000.0f);
    VectorSource source(environment, impulse(8192));
    std::deque<CrossoverFilter> filters;
    std::vector<wave::Producer*> elements;
    for (int i = 0; i < 3; ++i) {
        CrossoverFilter& filter = filters.emplace_back(environment);
        filter.source = &source;
        filter.response = i;
        filter.slope = slope;
        filter.frequency.parameter().setValue(octaves(hz), 0.0f);
        elements.push_back(&filter);
    }
    return runElements(environment, elements, evenBlocks(8192, kBlock));
}

TEST(CrossoverFilter, SplitsIntoBandsThatSumToAnAllPass) {
    const int orders[] = {1, 2, 4, 6, 8};
    for (int slope = CrossoverFilter::Order1; slope <= CrossoverFilter::Order8; ++slope) {
        for (const double cutoff : {80.0, 2000.0, 9000.0}) {
            SCOPED_TRACE(testing::Message() << "slope " << slope << " at " << cutoff << " Hz");
            const auto out = split(slope, cutoff);
            const auto levelAt = [&](int response, double hz) {
                return db(std::abs(transformAt(out[static_cast<std::size_t>(response)], hz / 48000.0)));
            };
            Signal sum(out[0].size());
            for (std::size_t i = 0; i < sum.size(); ++i) sum[i] = out[0][i] + out[1][i];
            EXPECT_LT(nullDb(sum, out[2]), -110.0);
            for (const double hz : {500.0, 2000.0, 8000.0}) {
                EXPECT_NEAR(levelAt(CrossoverFilter::AllPass, hz), 0.0, 1e-3);
            }
            for (const int response : {CrossoverFilter::LowPass, CrossoverFilter::HighPass}) {
                const bool first = slope == CrossoverFilter::Order1;
                EXPECT_NEAR(levelAt(response, cutoff), first ? -3.01 : -6.02, 0.01);
                if (cutoff != 2000.0) continue;
                // Two octaves in the warped domain away from the cut-off, deep in the stop band.
                const double far = response == CrossoverFilter::LowPass ? 4.0 : 0.25;
                const double hz = std::atan(far * std::tan(kPi * cutoff / 48000.0)) * 48000.0 / kPi;
                const double expected = first ? -10.0 * std::log10(1.0 + 16.0)
                                              : -20.0 * std::log10(1.0 + std::pow(4.0, orders[slope]));
                EXPECT_NEAR(levelAt(response, hz), expected, 0.05) << "response " << response;
            }
        }
    }
}

/// Low plus high of a splitter whose frequency takes a course in octaves, and a CrossoverFilter's all-pass on
/// the same course.
struct Reunited {
    Reunited(int slope, int mode, const Signal& in, const Signal& course) {
        wave::Environment environment(kBlock);
        environment.setSampleRate(48000.0f);
        VectorSource source(environment, in);
        VectorSource frequency(environment, course, ConstantFlag::WhereTrue);
        DynamicsEngine::BandSplitter splitter(environment, source, frequency);
        splitter.low.slope = slope;
        splitter.high.slope = slope;
        splitter.processingMode = mode;
        CrossoverFilter all(environment);
        all.source = &source;
        all.response = CrossoverFilter::AllPass;
        all.slope = slope;
        all.frequency.setSource(&frequency);
        wave::Producer* const ends[] = {&splitter.output(0), &splitter.output(1), &all};
        const auto out = runElements(environment, ends, evenBlocks(static_cast<int>(in.size()), kBlock));
        allPass = out[2];
        low = out[0];
        for (std::size_t i = 0; i < in.size(); ++i) sum.push_back(out[0][i] + out[1][i]);
    }
    Signal low, sum, allPass;
};

TEST(BandSplitter, LosesNothingOfTheSignalAlsoWhileItsFrequencyGlides) {
    using Splitter = DynamicsEngine::BandSplitter;
    const Signal noise = whiteNoise(5, 24000, 0.5), tone = sine(900.0, 48000.0, 24000, 0.5);
    const Signal still(24000, octaves(900.0));
    Signal gliding = still, racing = still;
    for (std::size_t i = 0; i < gliding.size(); ++i) {
        const double at = static_cast<double>(i);
        gliding[i] += static_cast<float>(2.0 * std::sin(at / 4000));  // up to 3.5 octaves a second
        racing[i] += static_cast<float>(4.0 * std::sin(at / 300));    // 640 of them
    }
    for (int slope = CrossoverFilter::Order1; slope <= CrossoverFilter::Order8; ++slope) {
        for (const Signal* course : std::initializer_list<const Signal*>{&still, &gliding, &racing}) {
            SCOPED_TRACE(testing::Message() << "slope " << slope << (course == &still ? ", still" : ""));
            const Reunited subtracted(slope, Splitter::Subtract, noise, *course);
            EXPECT_LT(nullDb(subtracted.sum, noise), -130.0) << "the difference is rounded once";
            EXPECT_GT(nullDb(subtracted.low, noise), -20.0);
            const Reunited filtered(slope, Splitter::Filters, noise, *course);
            // Sections in a row that move do not commute: from order 4 on the sum is near the all-pass, and
            // as loud as what came in.
            const bool exact = course == &still || slope < CrossoverFilter::Order4;
            EXPECT_LT(nullDb(filtered.sum, filtered.allPass), exact                ? -130.0
                                                              : course == &gliding ? -35.0
                                                                                   : -14.0);
            EXPECT_NEAR(db(rms(filtered.sum) / rms(noise)), 0.0, course == &racing ? 0.2 : 0.003);
            const Reunited heard(slope, Splitter::Filters, tone, *course);
            EXPECT_LT(db(amplitudeAt(heard.sum, 9000.0 / 48000.0)), -100.0) << "clicks";
        }
    }
}

// A full list must neither overflow nor lose samples.
TEST(BiquadProcessor, FoldsRunsAndNeverOverflows) {
    wave::Environment environment(64);
    BiquadProcessor processor(environment, 1, 16);
    const Signal in(64, 1.0f);
    Signal out(64);
    for (int i = 0; i < 64; ++i) {
        const BiquadCoefficients gain{1.0 + i, 0.0, 0.0, 0.0, 0.0};
        processor.queue(1, {&gain, 1});
    }
    ASSERT_TRUE(processor.process(in.data(), out.data(), 64));
    EXPECT_EQ(out[0], 1.0f);
    EXPECT_EQ(out[4], 5.0f);
    EXPECT_EQ(out[63], 6.0f) << "64 / 16 + 2 runs have room; the last one goes on";

    const BiquadCoefficients unity;
    for (int i = 0; i < 63; ++i) processor.queue(1, {&unity, 1});
    const BiquadCoefficients half{0.5, 0.0, 0.0, 0.0, 0.0};
    processor.queue(1, {&half, 1});
    ASSERT_TRUE(processor.process(in.data(), out.data(), 64));
    EXPECT_EQ(out[62], 1.0f);
    EXPECT_EQ(out[63], 0.5f) << "equal sets fold into one run, so the list does not fill";
}

}  // namespace
}  // namespace vanta::test
