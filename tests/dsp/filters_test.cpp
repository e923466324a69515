#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

#include "dsp/filter/crossover_filter.hpp"
#include "dsp/filter/eq_filter.hpp"
#include "tests/dsp/spectrum.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/realtime_trap.hpp"
#include "tests/support/signals.hpp"

namespace vanta {
namespace {

using test::Signal;

constexpr int kBlock = 256;
constexpr double kPi = std::numbers::pi;

template <typename Filter>
struct Rig {
    explicit Rig(Signal signal, float rate = 48000.0f) : source(environment, std::move(signal)) {
        environment.setSampleRate(rate);
        filter.source = &source;
    }
    Signal run(int count, int block = kBlock) { return run(test::evenBlocks(count, block)); }
    Signal run(std::span<const int> blocks) { return test::runElement(environment, filter, blocks); }

    wave::Environment environment{kBlock};
    test::VectorSource source;
    Filter filter{environment};
};

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

TEST(EQFilter, hasTheResponseOfItsPrototype) {
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
            Rig<EQFilter> rig(test::impulse(16384), rate);
            tune(rig.filter, c.shape, c.slope, c.cutoff);
            rig.filter.gain.parameter().setValue(static_cast<float>(c.gainDb), 0.0f);
            const Signal response = rig.run(16384);
            for (const double hz : {150.0, 500.0, 1000.0, 2100.0, 4000.0, 7000.0, 15000.0}) {
                const double expected = analyticDb(c, hz, static_cast<double>(rate));
                if (expected < -100.0) continue;
                EXPECT_NEAR(test::db(std::abs(test::transformAt(response, hz / static_cast<double>(rate)))),
                            expected, 0.02)
                    << "shape " << c.shape << " order " << c.order << " at " << hz << ", " << rate;
            }
        }
    }
}

TEST(EQFilter, resonatesByItsQ) {
    for (const float q : {0.5f, 1.0f, 4.0f}) {
        Rig<EQFilter> rig(test::impulse(16384));
        tune(rig.filter, AnalogFilterPrototype::LowPass, EQFilter::Order2, 1000.0);
        rig.filter.q.parameter().setValue(q, 0.0f);
        const Signal response = rig.run(16384);
        // At its cut-off a section of the second order passes its Q.
        EXPECT_NEAR(std::abs(test::transformAt(response, 1000.0 / 48000.0)),
                    static_cast<double>(q) * std::numbers::sqrt2 / 2.0, 1e-3);
    }
}

TEST(EQFilter, agreesWithItsPrototypesOwnResponse) {
    AnalogFilterPrototype prototype;
    prototype.design(AnalogFilterPrototype::HighPass, 3, std::numbers::sqrt2 / 2.0, 1.0);
    prototype.setFrequencyScale(100.0);
    const double frequencies[] = {10.0, 100.0, 1000.0};
    double squares[3];
    prototype.squaredMagnitudes(frequencies, squares);
    for (int i = 0; i < 3; ++i) {
        const double x = std::pow(frequencies[i] / 100.0, 6.0);
        EXPECT_NEAR(squares[i], x / (1.0 + x), 1e-12);
    }
}

TEST(EQFilter, blocksDcInOneFirstOrderSection) {
    Rig<EQFilter> rig(Signal(192000, 0.25f));
    tune(rig.filter, AnalogFilterPrototype::HighPass, EQFilter::Order1, 1.5);
    const Signal out = rig.run(192000);
    EXPECT_EQ(rig.filter.processor.sectionCount(), 1);
    EXPECT_NEAR(out[0], 0.25f, 1e-4f);
    // One time constant is 1 / (2 pi 1.5 Hz), 106 ms.
    EXPECT_NEAR(out[5093], 0.25f * std::exp(-1.0f), 1e-3f);
    EXPECT_LT(std::abs(out.back()), 1e-6f);

    AnalogFilterPrototype prototype;
    prototype.design(AnalogFilterPrototype::HighPass, 1, 1.0, 1.0);
    const auto c = bilinearTransform(prototype.sections()[0], bilinearScale(1.5, 48000.0));
    EXPECT_EQ(c.b2, 0.0);
    EXPECT_EQ(c.a2, 0.0);
    EXPECT_EQ(c.b1, -c.b0);
}

TEST(EQFilter, staysStableAboveTheNyquistFrequency) {
    for (const int shape : {AnalogFilterPrototype::LowPass, AnalogFilterPrototype::HighPass}) {
        Rig<EQFilter> rig(test::whiteNoise(1, 20000), 8000.0f);
        tune(rig.filter, shape, EQFilter::Order8, 32000.0);
        const Signal out = rig.run(20000);
        EXPECT_LT(test::peak(out), 2.0);
    }
}

TEST(EQFilter, doesNotDependOnBlocksAndResets) {
    const Signal noise = test::whiteNoise(1, 5000);
    const auto prepared = [&] {
        auto rig = std::make_unique<Rig<EQFilter>>(noise);
        tune(rig->filter, AnalogFilterPrototype::HighPass, EQFilter::Order4, 500.0);
        return rig;
    };
    const Signal expected = prepared()->run(5000);
    EXPECT_EQ(prepared()->run(test::randomBlocks(5000, kBlock, 5)), expected);
    EXPECT_EQ(prepared()->run(5000, 1), expected);
    auto rig = prepared();
    rig->run(777);
    rig->environment.resetGraph(wave::ResetMode::ResetActive);
    rig->source.rewind();
    EXPECT_EQ(rig->run(5000), expected);
}

TEST(EQFilter, fadesInAndOutWhenSwitched) {
    const double rate = 48000.0;
    const int count = 6000;
    const Signal tone = test::sine(100.0, rate, 3 * count, 0.5);
    Rig<EQFilter> rig(tone);
    tune(rig.filter, AnalogFilterPrototype::HighPass, EQFilter::Order2, 4000.0);
    Signal out = rig.run(count);
    rig.filter.enabled = false;
    const Signal off = rig.run(count, 60);
    EXPECT_EQ(&rig.filter.current(), &rig.source.current()) << "no copy once it is off";
    out.insert(out.end(), off.begin(), off.end());
    rig.filter.enabled = true;
    const Signal on = rig.run(count, 100);
    out.insert(out.end(), on.begin(), on.end());

    // 960 samples are 20 ms.
    for (std::size_t i = 960; i < off.size(); ++i) ASSERT_EQ(off[i], tone[count + i]);
    EXPECT_LT(std::abs(off[480]), 0.6f * std::abs(tone[count + 480]) + 0.01f);
    // The tone itself moves by 0.0065 a sample; 0.5 within 960 samples of fade add 0.0005.
    for (std::size_t i = 1; i < out.size(); ++i) ASSERT_LT(std::abs(out[i] - out[i - 1]), 0.008f) << i;
    EXPECT_LT(test::peak(std::span(on.data() + 4000, 2000)), 0.001);
}

TEST(EQFilter, isOffAtOnceBeforeTheFirstBlock) {
    const Signal noise = test::whiteNoise(1, 100);
    Rig<EQFilter> rig(noise);
    tune(rig.filter, AnalogFilterPrototype::HighPass, EQFilter::Order1, 1000.0);
    rig.filter.enabled = false;
    EXPECT_EQ(rig.run(100), noise);
}

// What a filter remembers must not sound when it comes back.
TEST(EQFilter, comesBackWithoutItsOldTail) {
    Signal signal(20000);
    std::fill(signal.begin(), signal.begin() + 4000, 0.5f);
    Rig<EQFilter> rig(signal);
    tune(rig.filter, AnalogFilterPrototype::HighPass, EQFilter::Order1, 1.5);
    rig.run(4000);
    rig.filter.enabled = false;
    rig.run(4000);
    rig.filter.enabled = true;
    EXPECT_EQ(test::peak(rig.run(4000)), 0.0);
}

TEST(EQFilter, preloadsItsStateWhereAsked) {
    Rig<EQFilter> rig(Signal(2000, 0.5f));
    rig.filter.processor.resetMode = BiquadProcessor::PreloadInput;
    tune(rig.filter, AnalogFilterPrototype::LowPass, EQFilter::Order3, 100.0);
    rig.run(100);
    rig.filter.slope = EQFilter::Order6;  // restarts the state
    const Signal out = rig.run(1000);
    EXPECT_EQ(rig.filter.processor.sectionCount(), 3);
    for (const float x : out) ASSERT_NEAR(x, 0.5f, 1e-6f);
}

TEST(EQFilter, fadesAFlatShelfIntoTheDrySignal) {
    const Signal noise = test::whiteNoise(1, 1000, 0.5);
    Rig<EQFilter> rig(noise);
    tune(rig.filter, AnalogFilterPrototype::HighShelf, EQFilter::Order2, 3000.0);
    EXPECT_EQ(rig.run(512), Signal(noise.begin(), noise.begin() + 512));
    EXPECT_EQ(&rig.filter.current(), &rig.source.current()) << "0 dB hands on the input block";

    // Just below the limit it is all but there, so nothing jumps at the limit.
    const auto shelved = [&](float db) {
        Rig<EQFilter> fresh(noise);
        tune(fresh.filter, AnalogFilterPrototype::HighShelf, EQFilter::Order2, 3000.0);
        fresh.filter.gain.parameter().setValue(db, 0.0f);
        return fresh.run(1000);
    };
    EXPECT_LT(test::nullDb(shelved(0.0499f), shelved(0.0501f)), -90.0);
    EXPECT_GT(test::nullDb(shelved(0.03f), noise), -70.0);
}

TEST(EQFilter, leavesAnUnknownShapeAlone) {
    const Signal noise = test::whiteNoise(1, 500);
    Rig<EQFilter> rig(noise);
    tune(rig.filter, 7, EQFilter::Order16, 1000.0);
    EXPECT_EQ(rig.run(500), noise);
}

// Steps in the coefficients would spread over the whole spectrum.
TEST(EQFilter, followsAutomationWithoutClicks) {
    const double rate = 48000.0;
    Rig<EQFilter> rig(test::sine(500.0, rate, 32768, 0.5));
    tune(rig.filter, AnalogFilterPrototype::LowPass, EQFilter::Order2, 8000.0);
    Signal out;
    const float targets[] = {octaves(700.0), octaves(8000.0), octaves(300.0), octaves(4000.0)};
    for (const float target : targets) {
        rig.filter.frequency.parameter().setValue(target, 100.0f);
        const Signal part = rig.run(8192);
        out.insert(out.end(), part.begin(), part.end());
    }
    for (const double hz : {6000.0, 10000.0, 16000.0, 22000.0}) {
        EXPECT_LT(test::db(test::amplitudeAt(out, hz / rate)), -90.0) << hz;
    }
}

// A glide ends exactly on its target, whatever the blocks.
TEST(EQFilter, arrivesWhereAGlideEnds) {
    const Signal noise = test::whiteNoise(1, 20000, 0.5);
    const auto glide = [&](int block) {
        Rig<EQFilter> rig(noise);
        tune(rig.filter, AnalogFilterPrototype::HighPass, EQFilter::Order2, 200.0);
        rig.run(1000, block);
        rig.filter.frequency.parameter().setValue(octaves(3000.0), 50.0f);
        return rig.run(19000, block);
    };
    const Signal large = glide(256);
    const Signal small = glide(20);
    EXPECT_LT(test::nullDb(std::span(large).first(2500), std::span(small).first(2500)), -20.0);
    EXPECT_LT(test::nullDb(std::span(large).subspan(6000), std::span(small).subspan(6000)), -120.0);
}

struct Split {
    explicit Split(int slope, double hz) : source(environment, test::whiteNoise(1, 8192, 0.5)) {
        environment.setSampleRate(48000.0f);
        CrossoverFilter* const filters[] = {&low, &high, &all};
        for (int i = 0; i < 3; ++i) {
            filters[i]->source = &source;
            filters[i]->response = i;
            filters[i]->slope = slope;
            filters[i]->frequency.parameter().setValue(octaves(hz), 0.0f);
        }
    }
    std::vector<Signal> run() {
        wave::Producer* const elements[] = {&low, &high, &all};
        return test::runElements(environment, elements, test::evenBlocks(8192, kBlock));
    }

    wave::Environment environment{kBlock};
    test::VectorSource source;
    CrossoverFilter low{environment}, high{environment}, all{environment};
};

TEST(CrossoverFilter, sumsToAnAllPass) {
    for (int slope = CrossoverFilter::Order1; slope <= CrossoverFilter::Order8; ++slope) {
        for (const double hz : {80.0, 1000.0, 9000.0}) {
            const auto out = Split(slope, hz).run();
            Signal sum(out[0].size());
            for (std::size_t i = 0; i < sum.size(); ++i) sum[i] = out[0][i] + out[1][i];
            EXPECT_LT(test::nullDb(sum, out[2]), -110.0) << "slope " << slope << " at " << hz;
        }
    }
}

TEST(CrossoverFilter, isSixDecibelsDownWhereTheBandsMeet) {
    const int orders[] = {1, 2, 4, 6, 8};
    for (int slope = CrossoverFilter::Order1; slope <= CrossoverFilter::Order8; ++slope) {
        for (const int response :
             {CrossoverFilter::LowPass, CrossoverFilter::HighPass, CrossoverFilter::AllPass}) {
            Rig<CrossoverFilter> rig(test::impulse(8192));
            rig.filter.response = response;
            rig.filter.slope = slope;
            rig.filter.frequency.parameter().setValue(octaves(2000.0), 0.0f);
            const Signal out = rig.run(8192);
            const auto levelAt = [&](double hz) {
                return test::db(std::abs(test::transformAt(out, hz / 48000.0)));
            };
            if (response == CrossoverFilter::AllPass) {
                for (const double hz : {500.0, 2000.0, 8000.0}) EXPECT_NEAR(levelAt(hz), 0.0, 1e-3);
                continue;
            }
            EXPECT_NEAR(levelAt(2000.0), slope == CrossoverFilter::Order1 ? -3.01 : -6.02, 0.01);
            // An octave in the warped domain away from the cut-off, deep in the stop band.
            const double far = response == CrossoverFilter::LowPass ? 4.0 : 0.25;
            const double hz = std::atan(far * std::tan(kPi * 2000.0 / 48000.0)) * 48000.0 / kPi;
            const double order = orders[slope];
            const double expected = slope == CrossoverFilter::Order1
                                        ? -10.0 * std::log10(1.0 + 16.0)
                                        : -20.0 * std::log10(1.0 + std::pow(4.0, order));
            EXPECT_NEAR(levelAt(hz), expected, 0.05) << "slope " << slope << " response " << response;
        }
    }
}

TEST(CrossoverFilter, changesItsSlopeWhileAudioRuns) {
    Rig<CrossoverFilter> rig(test::sine(100.0, 48000.0, 20000, 0.5));
    rig.run(1000);
    rig.filter.slope = CrossoverFilter::Order8;
    rig.run(1000);
    EXPECT_EQ(rig.filter.processor.sectionCount(), 4);
    rig.filter.response = CrossoverFilter::AllPass;
    rig.filter.slope = CrossoverFilter::Order1;
    rig.run(100);
    const Signal out = rig.run(1000);
    EXPECT_EQ(rig.filter.processor.sectionCount(), 1);
    for (const float x : out) ASSERT_LE(std::abs(x), 0.5f);
}

TEST(BiquadFilter, leavesTheSystemAloneWhileItIsPlayedWith) {
    Rig<EQFilter> rig(test::whiteNoise(1, 5000));
    tune(rig.filter, AnalogFilterPrototype::HighPass, EQFilter::Order1, 100.0);
    rig.run(100);
    wave::Producer* const elements[] = {&rig.filter};
    test::RealtimeTrap trap;
    for (int block = 0; block < 40; ++block) {
        test::runBlock(rig.environment, elements, 1 + 6 * block, [](int) {});
        const RealtimeScope audio;
        rig.filter.frequency.parameter().setValue(octaves(200.0 + 100.0 * block), 30.0f);
        rig.filter.slope = block % 9;
        rig.filter.enabled = block % 7 != 0;
    }
    EXPECT_EQ(trap.total(), 0) << trap.report();
}

// A full list must neither overflow nor lose samples.
TEST(BiquadProcessor, foldsRunsAndNeverOverflows) {
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
}  // namespace vanta
