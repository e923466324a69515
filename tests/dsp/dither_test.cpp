#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <vector>

#include "dsp/dither_filter.hpp"
#include "dsp/dither_seed.hpp"
#include "tests/dsp/spectrum.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/signals.hpp"

namespace vanta {
namespace {

using test::Signal;

constexpr int kShapings[] = {DitherFilter::None, DitherFilter::Basic, DitherFilter::Optimized,
                             DitherFilter::Weighted};

struct Rig {
    explicit Rig(Signal signal = {}, int bits = 16, int shaping = DitherFilter::Optimized)
        : source(environment, std::move(signal)) {
        setDitherSeed(4711);
        dither = std::make_unique<DitherFilter>(environment);
        dither->source = &source;
        dither->bits = bits;
        dither->noiseShaping = shaping;
    }
    Signal run(int count, int block = 256) {
        return test::runElement(environment, *dither, test::evenBlocks(count, block));
    }

    wave::Environment environment{256};
    test::VectorSource source;
    std::unique_ptr<DitherFilter> dither;
};

bool onGrid(const Signal& signal, int bits) {
    const double scale = std::ldexp(1.0, bits - 1);
    return std::all_of(signal.begin(), signal.end(), [&](float x) {
        const double steps = static_cast<double>(x) * scale;
        return steps == std::floor(steps);
    });
}

/// Mean power density between two frequencies, relative to white noise of the power of one step squared.
double densityDb(const Signal& noise, double lsb, double lowHz, double highHz) {
    const std::size_t segment = 2048;
    double power = 0.0;
    int bins = 0;
    const double rate = 44100.0;
    for (double f = lowHz; f < highHz; f += rate / 512.0) {
        for (std::size_t at = 0; at + segment <= noise.size(); at += segment) {
            power += std::norm(test::transformAt(std::span(noise).subspan(at, segment), f / rate));
            ++bins;
        }
    }
    return 10.0 * std::log10(power / bins / static_cast<double>(segment) / (lsb * lsb));
}

TEST(DitherFilter, writesWholeSteps) {
    for (const int bits : {8, 16, 18, 20, 22, 24}) {
        for (const int shaping : kShapings) {
            Rig rig(test::pinkNoise(1, 5000), bits, shaping);
            EXPECT_TRUE(onGrid(rig.run(5000), bits)) << bits << " bits, shaping " << shaping;
        }
    }
}

// Triangular noise of plus and minus one step has a variance of 1/6 step, rounding adds 1/12: together a
// quarter, whatever the signal (Lipshitz, Wannamaker, Vanderkooy, 1992).
TEST(DitherFilter, addsTriangularNoiseThatKnowsNothingOfTheSignal) {
    const double step = std::ldexp(1.0, -15);
    for (const double amplitude : {0.0, 0.3 * step, 0.5, 0.99}) {
        const Signal tone = test::sine(997.0, 44100.0, 100000, amplitude);
        Rig rig(tone, 16, DitherFilter::None);
        const Signal out = rig.run(100000);
        double mean = 0.0;
        double square = 0.0;
        for (std::size_t i = 0; i < out.size(); ++i) {
            const double error =
                (static_cast<double>(out[i]) - static_cast<double>(tone[i]) * rig.dither->gain()) / step;
            mean += error / 1e5;
            square += error * error / 1e5;
            ASSERT_LE(std::abs(error), 1.5 + 1e-3);
        }
        EXPECT_NEAR(mean, 0.0, 0.01) << amplitude;
        EXPECT_NEAR(square, 0.25, 0.01) << amplitude;
    }
}

TEST(DitherFilter, hasFlatNoiseWithoutShaping) {
    Rig rig({}, 16, DitherFilter::None);
    const Signal noise = rig.run(2048 * 40);
    const double step = static_cast<double>(rig.dither->lsb());
    for (const double hz : {200.0, 3000.0, 8000.0, 14000.0, 20000.0}) {
        EXPECT_NEAR(densityDb(noise, step, hz, hz + 1900.0), -6.02, 0.5) << hz;
    }
}

// The error is spread by 1 minus the set, so the noise is -6 dB times that response.
TEST(DitherFilter, shapesItsNoise) {
    const double atThreeKilohertz[] = {-6.0, -12.0, -16.0, -20.0};
    for (const int shaping : kShapings) {
        Rig rig({}, 16, shaping);
        const Signal noise = rig.run(2048 * 20);
        const double step = static_cast<double>(rig.dither->lsb());
        const double density = densityDb(noise, step, 2700.0, 3500.0);
        EXPECT_LT(density, atThreeKilohertz[shaping] + 1.0) << shaping;
        if (shaping > DitherFilter::None) {
            EXPECT_GT(densityDb(noise, step, 18000.0, 20000.0), 0.0) << "moved up, not away";
        }
    }
}

TEST(DitherFilter, neverPassesItsCeiling) {
    for (const int bits : {8, 16, 24}) {
        for (const float ceiling : {0.0f, -0.1f, -6.0f, -40.0f}) {
            for (const int shaping : kShapings) {
                const double level = std::pow(10.0, static_cast<double>(ceiling) / 20.0);
                const Signal square = test::square(441.0, 44100.0, 20000, level);
                Rig rig(square, bits, shaping);
                rig.dither->ceiling = ceiling;
                const Signal out = rig.run(20000);
                EXPECT_LE(test::peak(out), level * (1.0 + 1e-6)) << bits << " " << ceiling << " " << shaping;
                EXPECT_TRUE(bits < 24 || test::peak(out) > level * 0.99);
            }
        }
    }
}

TEST(DitherFilter, takesOffJustWhatItCanAdd) {
    Rig rig;
    const double step = std::ldexp(1.0, -15);
    EXPECT_NEAR((1.0 - rig.dither->gain()) / step, 13.5, 0.05);
    rig.dither->noiseShaping = DitherFilter::Weighted;
    EXPECT_NEAR((1.0 - rig.dither->gain()) / step, 33.6, 0.05);
    rig.dither->noiseShaping = DitherFilter::None;
    EXPECT_NEAR((1.0 - rig.dither->gain()) / step, 1.5, 1e-6);
    rig.dither->noiseType = DitherFilter::Rounding;
    EXPECT_NEAR((1.0 - rig.dither->gain()) / step, 0.5, 1e-6);
    rig.dither->ceiling = -60.0f;
    EXPECT_NEAR(rig.dither->gain(), 1.0 - 0.5 * step / 0.001, 1e-6);
    rig.dither->bits = 8;
    EXPECT_EQ(rig.dither->gain(), 0.0);
    rig.dither->bits = 0;
    EXPECT_EQ(rig.dither->gain(), 1.0);
}

TEST(DitherFilter, handsOnItsInputWhenOff) {
    const Signal noise = test::whiteNoise(1, 512);
    Rig rig(noise, 0, DitherFilter::Weighted);
    rig.dither->ceiling = -20.0f;
    EXPECT_EQ(rig.run(512), noise);
    EXPECT_EQ(&rig.dither->current(), &rig.source.current());
}

TEST(DitherFilter, keepsDitheringSilence) {
    Rig rig({}, 16, DitherFilter::None);
    const Signal out = rig.run(1000);
    EXPECT_EQ(std::set<float>(out.begin(), out.end()).size(), 3u) << "one step up, none, one step down";
    EXPECT_FALSE(rig.dither->isConstant());
}

TEST(DitherFilter, roundsPlainlyWhereAsked) {
    const Signal noise = test::whiteNoise(1, 2000, 0.9);
    Rig rig(noise, 12);
    rig.dither->noiseType = DitherFilter::Rounding;
    const Signal out = rig.run(2000);
    EXPECT_TRUE(onGrid(out, 12));
    for (std::size_t i = 0; i < out.size(); ++i) {
        const double scaled = static_cast<double>(noise[i]) * rig.dither->gain();
        ASSERT_LE(std::abs(static_cast<double>(out[i]) - scaled), std::ldexp(0.5, -11) * 1.0001);
    }
}

TEST(DitherFilter, repeatsUnderAFixedSeedOnly) {
    const Signal music = test::pinkNoise(1, 3000);
    EXPECT_EQ(Rig(music).run(3000), Rig(music).run(3000, 77)) << "whatever the blocks";
    setDitherSeed(1);
    const std::uint32_t first = nextDitherSeed();
    EXPECT_NE(nextDitherSeed(), first);
    setDitherSeed(1);
    EXPECT_EQ(nextDitherSeed(), first);

    Rig rig;
    DitherFilter second(rig.environment);
    second.source = &rig.source;
    second.bits = 16;
    wave::Producer* const both[] = {rig.dither.get(), &second};
    const auto out = test::runElements(rig.environment, both, test::evenBlocks(20000, 256));
    double product = 0.0;
    for (std::size_t i = 0; i < 20000; ++i) {
        product += static_cast<double>(out[0][i]) * static_cast<double>(out[1][i]);
    }
    EXPECT_LT(std::abs(product / 20000.0 / (test::rms(out[0]) * test::rms(out[1]))), 0.05)
        << "two channels share no noise";
}

TEST(DitherFilter, forgetsItsErrorsOnResetOnly) {
    const Signal tone = test::sine(100.0, 44100.0, 1000, 0.5);
    Rig rig(tone);
    rig.run(500);
    rig.dither->noiseShaping = DitherFilter::Weighted;
    const Signal out = rig.run(500);
    for (std::size_t i = 0; i < out.size(); ++i) {
        ASSERT_NEAR(out[i], tone[500 + i], 60.0f * rig.dither->lsb()) << "no jump on a change of shaping";
    }
}

}  // namespace
}  // namespace vanta
