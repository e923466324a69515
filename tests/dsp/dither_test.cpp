#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "dsp/dither/dither_filter.hpp"
#include "dsp/dither/dither_seed.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

constexpr int kShapings[] = {DitherFilter::None, DitherFilter::Basic, DitherFilter::Optimized,
                             DitherFilter::Weighted};

struct Rig : ElementRig<DitherFilter> {
    explicit Rig(Signal signal = {}, int bits = 16, int shaping = DitherFilter::Optimized)
        : ElementRig(seeded(std::move(signal))) {
        element.bits = bits;
        element.noiseShaping = shaping;
    }
    static Signal seeded(Signal signal) {
        setDitherSeed(4711);
        return signal;
    }
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
            power += std::norm(transformAt(std::span(noise).subspan(at, segment), f / rate));
            ++bins;
        }
    }
    return 10.0 * std::log10(power / bins / static_cast<double>(segment) / (lsb * lsb));
}

// Triangular noise of plus and minus one step has a variance of 1/6 step, rounding adds 1/12: together a
// quarter, whatever the signal (Lipshitz, Wannamaker, Vanderkooy, 1992).
TEST(DitherFilter, AddsTriangularNoiseThatKnowsNothingOfTheSignal) {
    const double step = std::ldexp(1.0, -15);
    for (const double amplitude : {0.0, 0.3 * step, 0.5, 0.99}) {
        const Signal tone = sine(997.0, 44100.0, 100000, amplitude);
        Rig rig(tone, 16, DitherFilter::None);
        const Signal out = rig.run(100000);
        double mean = 0.0;
        double square = 0.0;
        for (std::size_t i = 0; i < out.size(); ++i) {
            const double error =
                (static_cast<double>(out[i]) - static_cast<double>(tone[i]) * rig.element.gain()) / step;
            mean += error / 1e5;
            square += error * error / 1e5;
            ASSERT_LE(std::abs(error), 1.5 + 1e-3);
        }
        EXPECT_NEAR(mean, 0.0, 0.01) << amplitude;
        EXPECT_NEAR(square, 0.25, 0.01) << amplitude;
    }
}

// The error is spread by 1 minus the set, so the noise is -6 dB times that response.
TEST(DitherFilter, ShapesItsNoise) {
    const double atThreeKilohertz[] = {-6.0, -12.0, -16.0, -20.0};
    Rig flat({}, 16, DitherFilter::None);
    const Signal white = flat.run(2048 * 40);
    for (const double hz : {200.0, 3000.0, 8000.0, 14000.0, 20000.0}) {
        EXPECT_NEAR(densityDb(white, static_cast<double>(flat.element.lsb()), hz, hz + 1900.0), -6.02, 0.5)
            << hz;
    }
    for (const int shaping : kShapings) {
        Rig rig({}, 16, shaping);
        const Signal noise = rig.run(2048 * 20);
        const double step = static_cast<double>(rig.element.lsb());
        const double density = densityDb(noise, step, 2700.0, 3500.0);
        EXPECT_LT(density, atThreeKilohertz[shaping] + 1.0) << shaping;
        if (shaping > DitherFilter::None) {
            EXPECT_GT(densityDb(noise, step, 18000.0, 20000.0), 0.0) << "moved up, not away";
        }
    }
}

TEST(DitherFilter, WritesWholeStepsBelowItsCeiling) {
    for (const int bits : {8, 16, 18, 20, 22, 24}) {
        for (const float ceiling : {0.0f, -0.1f, -6.0f, -40.0f}) {
            for (const int shaping : kShapings) {
                const double level = std::pow(10.0, static_cast<double>(ceiling) / 20.0);
                const Signal tone = square(441.0, 44100.0, 20000, level);
                Rig rig(tone, bits, shaping);
                rig.element.ceiling = ceiling;
                const Signal out = rig.run(20000);
                EXPECT_LE(peak(out), level * (1.0 + 1e-6)) << bits << " " << ceiling << " " << shaping;
                EXPECT_TRUE(bits < 24 || peak(out) > level * 0.99);
                EXPECT_TRUE(onGrid(out, bits)) << bits << " bits, shaping " << shaping;
            }
        }
    }
}

TEST(DitherFilter, TakesOffJustWhatItCanAdd) {
    const double step = std::ldexp(1.0, -15);
    const std::pair<int, double> steps[] = {
        {DitherFilter::Optimized, 13.5}, {DitherFilter::Weighted, 33.6}, {DitherFilter::None, 1.5}};
    for (const auto& [shaping, taken] : steps) {
        EXPECT_NEAR((1.0 - Rig({}, 16, shaping).element.gain()) / step, taken, 0.05) << shaping;
    }
    Rig rig;
    rig.element.noiseType = DitherFilter::Rounding;
    rig.element.ceiling = -60.0f;
    EXPECT_NEAR(rig.element.gain(), 1.0 - 0.5 * step / 0.001, 1e-6);
    rig.element.bits = 8;
    EXPECT_EQ(rig.element.gain(), 0.0);
    rig.element.bits = 0;
    EXPECT_EQ(rig.element.gain(), 1.0);
}

TEST(DitherFilter, DrawsANoiseOfItsOwnForEachChannel) {
    setDitherSeed(1);
    const std::uint32_t first = nextDitherSeed();
    EXPECT_NE(nextDitherSeed(), first);
    Rig rig;
    DitherFilter second(rig.environment);
    second.source = &rig.source;
    second.bits = 16;
    wave::Producer* const both[] = {&rig.element, &second};
    const auto out = runElements(rig.environment, both, evenBlocks(20000, 256));
    double product = 0.0;
    for (std::size_t i = 0; i < 20000; ++i) product += static_cast<double>(out[0][i] * out[1][i]);
    EXPECT_LT(std::abs(product / 20000.0 / (rms(out[0]) * rms(out[1]))), 0.05);
}

TEST(DitherFilter, RoundsPlainlyWhereAsked) {
    const Signal noise = whiteNoise(1, 2000, 0.9);
    Rig rig(noise, 12);
    rig.element.noiseType = DitherFilter::Rounding;
    const Signal out = rig.run(2000);
    for (std::size_t i = 0; i < out.size(); ++i) {
        const double scaled = static_cast<double>(noise[i]) * rig.element.gain();
        ASSERT_LE(std::abs(static_cast<double>(out[i]) - scaled), std::ldexp(0.5, -11) * 1.0001);
    }
}

}  // namespace
}  // namespace vanta::test
