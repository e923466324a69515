#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

#include "dsp/kernel/detector_kernels.hpp"
#include "dsp/kernel/level_math.hpp"
#include "dsp/kernel/mixer_kernels.hpp"
#include "dsp/kernel/running_mean.hpp"
#include "tests/support/instruction_sets.hpp"

namespace vanta {
namespace {

constexpr double kEpsilon = std::numeric_limits<float>::epsilon();
constexpr std::array<std::size_t, 14> kLengths = {0, 1, 2, 3, 4, 5, 7, 8, 15, 16, 17, 33, 64, 131};
constexpr float kCanary = -12345.0f;

/// Runs a kernel on part of a block at every length and at several alignments, and compares each sample with
/// the twin within `tolerance(expected)`; what surrounds the part must stay.
template <typename Kernel, typename Twin, typename Tolerance>
void expectTwinHere(const std::vector<float>& in, Kernel&& kernel, Twin&& twin, Tolerance&& tolerance) {
    for (const std::size_t length : kLengths) {
        for (std::size_t offset = 0; offset < 5; ++offset) {
            std::vector<float> out(length + offset + 20, kCanary);
            const std::size_t start = (offset * 37 + length) % (in.size() - 131);
            kernel(in.data() + start, start, out.data() + offset, length);
            for (std::size_t i = 0; i < out.size(); ++i) {
                if (i < offset || i >= offset + length) {
                    ASSERT_EQ(out[i], kCanary) << "written outside at length " << length;
                    continue;
                }
                const std::size_t at = start + i - offset;
                const double expected = twin(static_cast<double>(in[at]), at);
                ASSERT_NEAR(out[i], expected, tolerance(expected)) << "input " << in[at] << " at " << at;
            }
        }
    }
}

template <typename Kernel, typename Twin, typename Tolerance>
void expectTwin(const std::vector<float>& in, Kernel&& kernel, Twin&& twin, Tolerance&& tolerance) {
    test::forEachInstructionSet([&](const char* name) {
        SCOPED_TRACE(name);
        expectTwinHere(in, kernel, twin, tolerance);
    });
}

/// Amplitudes from -200 dB to +40 dB of either sign, with the corners of the range among them.
std::vector<float> amplitudes() {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> exponent(-10.0f, 2.0f);
    std::vector<float> values(400);
    for (float& value : values) value = std::pow(10.0f, exponent(random)) * ((random() & 1) ? 1.0f : -1.0f);
    const float corners[] = {0.0f,  -0.0f,  1.0f,   0.99999994f, 1.0000001f, 0.5f,       0.70710677f,
                             1e-9f, 1e-10f, 9e-11f, 1e-40f,      2.0f,       1048576.0f, 0.70710683f};
    for (std::size_t i = 0; i < std::size(corners); ++i) values[i * 23] = corners[i];
    return values;
}

std::vector<float> uniform(float low, float high, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> spread(low, high);
    std::vector<float> values(400);
    for (float& value : values) value = spread(random);
    return values;
}

double levelDb(double x) {
    return std::abs(x) <= 1e-10 ? -180.0 : std::max(20 * std::log10(std::abs(x)), -180.0);
}
double amplitude(double db) {
    return std::pow(10.0, db / 20);
}

auto absolute(double tolerance) {
    return [tolerance](double) { return tolerance; };
}
/// Some units in the last place of the result, or of `least`.
auto units(double count, double least = 0.0) {
    return [=](double expected) { return count * kEpsilon * std::max(std::abs(expected), least); };
}

TEST(LevelMath, ConvertsBetweenAmplitudeAndDecibels) {
    // A level has the resolution of its logarithm's two parts, of which the larger is near the level itself;
    // the chords of the table lie 3e-8 below the curve.
    expectTwin(
        amplitudes(),
        [](const float* in, std::size_t, float* out, std::size_t n) {
            kernel::decibelsFromAmplitude(in, out, n);
        },
        [](double x, std::size_t) { return levelDb(x); }, units(2, 6.0));
    expectTwin(
        amplitudes(),
        [](const float* in, std::size_t, float* out, std::size_t n) {
            kernel::decibelsFromReduction(in, out, n);
        },
        [](double x, std::size_t) { return -levelDb(static_cast<double>(1.0f - static_cast<float>(x))); },
        units(3));
    // The argument of an exponential is rounded: x ln(10)/20 units come on top.
    const auto decibels = uniform(-200.0f, 100.0f, 2);
    expectTwin(
        decibels,
        [](const float* in, std::size_t, float* out, std::size_t n) {
            kernel::amplitudeFromDecibels(in, out, n);
        },
        [](double x, std::size_t) { return amplitude(x); }, units(25));
    expectTwin(
        decibels,
        [](const float* in, std::size_t, float* out, std::size_t n) {
            kernel::reductionFromDecibels(in, out, n);
        },
        [](double x, std::size_t) { return -std::expm1(-x * std::numbers::ln10 / 20); }, units(1));
}

TEST(LevelMath, KeepsTheDigitsOfTinyGainChanges) {
    const std::vector<float> tiny = uniform(0.0f, 1e-4f, 3);
    std::vector<float> out(tiny.size());
    kernel::reductionFromDecibels(tiny.data(), out.data(), out.size());
    for (std::size_t i = 0; i < out.size(); ++i) {
        const double expected = -std::expm1(-static_cast<double>(tiny[i]) * std::numbers::ln10 / 20);
        ASSERT_NEAR(out[i], expected, 1e-6 * expected + 1e-15);
    }
}

TEST(LevelMath, LogarithmIsContinuousOverEveryMantissa) {
    // A walk over the mantissas of two octaves: any fault of the table or of the exponent's part is a step.
    std::vector<float> in, out;
    for (std::uint32_t bits = 0x3F000000; bits < 0x40000000; bits += 509)
        in.push_back(std::bit_cast<float>(bits));
    out.resize(in.size());
    kernel::decibelsFromAmplitude(in.data(), out.data(), in.size());
    double worst = 0.0;
    for (std::size_t i = 0; i < in.size(); ++i) worst = std::max(worst, std::abs(out[i] - levelDb(in[i])));
    EXPECT_LT(worst, 1.5e-6);
}

TEST(LevelMath, BendsControlSignals) {
    const auto strength = uniform(0.0f, 1.0f, 4);
    const auto in = uniform(0.0f, 1.0f, 5);
    expectTwin(
        in,
        [&](const float* x, std::size_t start, float* out, std::size_t n) {
            kernel::exponentialCurve(x, strength.data() + start, out, n);
        },
        [&](double x, std::size_t i) {
            const double k = static_cast<float>(15.0 * strength[i] + 0.01);
            return std::expm1(k * x) / std::expm1(k);
        },
        units(1, 1e-6));
    expectTwin(
        in,
        [&](const float* x, std::size_t start, float* out, std::size_t n) {
            kernel::powerCurve(x, strength.data() + start, out, n);
        },
        [&](double x, std::size_t i) { return std::pow(x, 15.0 * strength[i] + 1.0); },
        // The rounding of the exponent counts as often as the exponent is large.
        [](double y) { return kEpsilon * y * (2.0 + 2.0 * std::abs(std::log(y))); });
    expectTwin(
        in,
        [](const float* x, std::size_t, float* out, std::size_t n) { kernel::powerFiveAndHalf(x, out, n); },
        [](double x, std::size_t) { return std::pow(x, 5.5); }, units(4));
    expectTwin(
        in, [](const float* x, std::size_t, float* out, std::size_t n) { kernel::squareRoot(x, out, n); },
        [](double x, std::size_t) { return std::sqrt(x); }, units(1));
}

void expectFiniteHere() {
    const float large = std::numeric_limits<float>::max();
    const std::vector<float> extremes = {0.0f,   -0.0f,   1e-45f, -1e-45f, 1e-38f, 1.0f,   -1.0f, 0.5f,
                                         800.0f, -800.0f, 1e10f,  -1e10f,  1e30f,  -1e30f, large, -large};
    std::vector<float> x, s;
    for (const float a : extremes) {
        for (const float b : extremes) {
            x.push_back(a);
            s.push_back(b);
        }
    }
    x.push_back(0.25f), s.push_back(-0.01f / 15.0f);
    std::vector<float> out(x.size());
    const auto expectFinite = [&](const char* name) {
        for (std::size_t i = 0; i < out.size(); ++i) {
            ASSERT_TRUE(std::isfinite(out[i])) << name << " of " << x[i] << ", " << s[i];
        }
    };
    kernel::decibelsFromAmplitude(x.data(), out.data(), x.size());
    expectFinite("level");
    kernel::amplitudeFromDecibels(x.data(), out.data(), x.size());
    expectFinite("amplitude");
    kernel::decibelsFromReduction(x.data(), out.data(), x.size());
    expectFinite("gain change in dB");
    kernel::reductionFromDecibels(x.data(), out.data(), x.size());
    expectFinite("gain change");
    kernel::exponentialCurve(x.data(), s.data(), out.data(), x.size());
    expectFinite("exponential curve");
    kernel::powerCurve(x.data(), s.data(), out.data(), x.size());
    expectFinite("power curve");
    kernel::powerFiveAndHalf(x.data(), out.data(), x.size());
    expectFinite("power 5.5");
}

TEST(LevelMath, IsFiniteForEveryFiniteInput) {
    test::forEachInstructionSet([](const char* name) {
        SCOPED_TRACE(name);
        expectFiniteHere();
    });
}

/// Controls of one detector, one value a sample, and its curve.
struct DetectorTwin {
    std::vector<float> knee = uniform(0.0f, 20.0f, 11), threshold = uniform(-70.0f, 0.0f, 12),
                       ratio = uniform(1.0f, 120.0f, 13), limit = uniform(0.0f, 60.0f, 14);

    kernel::DetectorControls from(std::size_t start) const {
        return {knee.data() + start, threshold.data() + start, ratio.data() + start, limit.data() + start};
    }
    static double soft(double d, double k) {
        return k > 0 && std::abs(d) <= k / 2 ? std::pow((k / 2 + d) / k, 2) * k / 2 : d;
    }
    double limited(double g, std::size_t i) const { return std::max(std::min<double>(g, limit[i]), 0.0); }
    double factor(std::size_t i) const { return ratio[i] < 99.9999f ? 1.0 - 1.0 / ratio[i] : 1.0; }
    double compress(double level, std::size_t i) const {
        return limited(soft(level - threshold[i], knee[i]) * factor(i), i);
    }
    double expandUp(double level, std::size_t i) const {
        return limited(soft(level - threshold[i], knee[i]) * (ratio[i] - 1.0), i);
    }
};

// A level of up to 180 dB is known to 2 units; compressors do not enlarge that, and in amplitude a dB weighs
// 0.115.
constexpr double kDbTolerance = 3 * 180 * kEpsilon;
constexpr double kGainTolerance = 0.12 * kDbTolerance + 2 * kEpsilon;

TEST(DetectorKernels, CompressLikeTheirTwins) {
    const DetectorTwin twin;
    const auto decibels = uniform(-120.0f, 20.0f, 15);
    expectTwin(
        decibels,
        [&](const float* in, std::size_t start, float* out, std::size_t n) {
            kernel::compressDecibels(in, twin.from(start), out, n);
        },
        [&](double x, std::size_t i) { return twin.compress(x, i); }, absolute(kDbTolerance));
    expectTwin(
        amplitudes(),
        [&](const float* in, std::size_t start, float* out, std::size_t n) {
            kernel::compressAmplitude(in, twin.from(start), out, n);
        },
        [&](double x, std::size_t i) { return 1 - amplitude(-twin.compress(levelDb(x), i)); },
        absolute(kGainTolerance));
    expectTwin(
        decibels,
        [&](const float* in, std::size_t start, float* out, std::size_t n) {
            kernel::limitDecibels(in, twin.from(start), out, n);
        },
        [&](double x, std::size_t i) { return twin.limited(x - twin.threshold[i], i); },
        absolute(kDbTolerance));
    expectTwin(
        amplitudes(),
        [&](const float* in, std::size_t start, float* out, std::size_t n) {
            kernel::compressAmplitudeHard(in, twin.from(start), out, n);
        },
        [&](double x, std::size_t i) {
            return 1 - amplitude(-std::max(levelDb(x) - twin.threshold[i], 0.0) * twin.factor(i));
        },
        absolute(kGainTolerance));
    for (const float ratio : {1.5f, 20.0f, 99.99f, 100.0f}) {
        const double factor = ratio < 99.9999f ? 1.0 - 1.0 / ratio : 1.0;
        expectTwin(
            amplitudes(),
            [&](const float* in, std::size_t start, float* out, std::size_t n) {
                kernel::compressAmplitudeHard(in, twin.threshold.data() + start, ratio, out, n);
            },
            [&](double x, std::size_t i) {
                return 1 - amplitude(-std::max(levelDb(x) - twin.threshold[i], 0.0) * factor);
            },
            absolute(kGainTolerance));
    }
}

TEST(DetectorKernels, LimitAndClipLikeTheirTwins) {
    const DetectorTwin twin;
    for (const float threshold : {-180.0f, -24.0f, 0.0f, 6.0f}) {
        expectTwin(
            amplitudes(),
            [&](const float* in, std::size_t, float* out, std::size_t n) {
                kernel::limitAmplitude(in, threshold, out, n);
            },
            [&](double x, std::size_t) { return 1 - amplitude(-std::max(levelDb(x) - threshold, 0.0)); },
            absolute(2 * kEpsilon));
        expectTwin(
            amplitudes(),
            [&](const float* in, std::size_t, float* out, std::size_t n) {
                kernel::clipAmplitude(in, threshold, 40.0f, out, n);
            },
            [&](double x, std::size_t) {
                const double drive = threshold < 0 ? std::abs(x) * (amplitude(-threshold) - 1) : 0.0;
                return 1 - 1 / std::min(1 + drive, 100.0);
            },
            absolute(2 * kEpsilon));
    }
    expectTwin(
        amplitudes(),
        [&](const float* in, std::size_t start, float* out, std::size_t n) {
            kernel::limitAmplitude(in, twin.threshold.data() + start, out, n);
        },
        [&](double x, std::size_t i) {
            return 1 - amplitude(-std::max(levelDb(x) - twin.threshold[i], 0.0));
        },
        absolute(12 * kEpsilon));
}

constexpr double kSteepest = 6.0;  // of the expanders

void expectExpandDown(const DetectorTwin& twin) {
    const auto levels = amplitudes();
    for (const std::size_t length : kLengths) {
        for (const bool openAtStart : {false, true}) {
            const float hysteresis = 9.0f;
            std::vector<float> gain(length), change(length), db(length);
            for (std::size_t i = 0; i < length; ++i) db[i] = static_cast<float>(levelDb(levels[i]));
            bool open = openAtStart, openGain = openAtStart, openDb = openAtStart;
            kernel::expandDownAmplitude(levels.data(), twin.from(0), hysteresis, openGain, gain.data(),
                                        length);
            kernel::expandDownDecibels(db.data(), twin.from(0), hysteresis, openDb, change.data(), length);
            for (std::size_t i = 0; i < length; ++i) {
                const double distance = static_cast<double>(twin.threshold[i]) - db[i];
                open = open ? distance <= hysteresis : distance < 0;
                const double bent = DetectorTwin::soft(distance - twin.knee[i] / 2, twin.knee[i]);
                const double expected = open ? 0.0 : twin.limited(bent * (twin.ratio[i] - 1.0), i);
                ASSERT_NEAR(change[i], expected, kSteepest * kDbTolerance) << i << " of " << length;
                ASSERT_NEAR(gain[i], amplitude(-expected), kSteepest * kGainTolerance)
                    << i << " of " << length;
            }
            EXPECT_EQ(openGain, open);
            EXPECT_EQ(openDb, open);
        }
    }
}

TEST(DetectorKernels, ExpandLikeTheirTwins) {
    DetectorTwin twin;
    for (float& ratio : twin.ratio) ratio = 1.0f + ratio / 20.0f;
    const auto decibels = uniform(-120.0f, 20.0f, 16);
    expectTwin(
        decibels,
        [&](const float* in, std::size_t start, float* out, std::size_t n) {
            kernel::expandUpDecibels(in, twin.from(start), out, n);
        },
        [&](double x, std::size_t i) { return twin.expandUp(x, i); }, absolute(kSteepest * kDbTolerance));

    // The flag depends on all samples before, so whole blocks are compared, from either state.
    test::forEachInstructionSet([&](const char* name) {
        SCOPED_TRACE(name);
        expectExpandDown(twin);
    });
}

TEST(MixerKernels, CombineLikeTheirTwins) {
    auto x = uniform(-2.0f, 2.0f, 21);
    const auto a = uniform(0.0f, 1.0f, 22), gain = uniform(-1.0f, 1.0f, 23);
    for (std::size_t i = 0; i < x.size(); i += 7) x[i] = 0.0f;
    using Kernel = void (*)(const float*, const float*, const float*, float*, std::size_t);
    using Twin = double (*)(double, double, double);
    const std::pair<Kernel, Twin> cases[] = {
        {kernel::subtractProduct, [](double A, double v, double g) { return A - v * g; }},
        {kernel::maximumMagnitude, [](double A, double v, double g) { return std::max(A, std::abs(v) * g); }},
        {kernel::maximumProduct, [](double A, double v, double g) { return std::max(A, v * g); }},
        {kernel::minimumProduct, [](double A, double v, double g) { return std::min(A, v * g); }},
        {kernel::divideLimited,
         [](double A, double v, double g) {
             return v * g == 0 ? 0.0 : std::clamp(A / std::abs(v * g), 0.0, 1.0);
         }},
        {kernel::divideFloored,
         [](double A, double v, double g) { return std::max(A, 1e-9) / std::max(std::abs(v * g), 1e-9); }},
        {kernel::mixBothFull,
         [](double A, double v, double m) {
             return A * (1 - std::max(m, 0.0)) + v * (1 + std::min(m, 0.0));
         }},
        {kernel::mixLinear,
         [](double A, double v, double m) { return A * (1 - (1 + m) / 2) + v * (1 + m) / 2; }},
        {kernel::mixConstantPower,
         [](double A, double v, double m) {
             const double angle = (1 + m) * std::numbers::pi / 4;
             return A * std::cos(angle) + v * std::sin(angle);
         }},
    };
    for (const auto& [kernel, twin] : cases) {
        expectTwin(
            a,
            [&, k = kernel](const float* in, std::size_t start, float* out, std::size_t n) {
                k(in, x.data() + start, gain.data() + start, out, n);
            },
            [&, t = twin](double A, std::size_t i) { return t(A, x[i], gain[i]); }, units(8, 1.0));
    }
}

TEST(MixerKernels, SumAnyNumberOfProducts) {
    const auto in = uniform(-1.0f, 1.0f, 31), gain = uniform(-1.0f, 1.0f, 32);
    for (const bool constant : {false, true}) {
        for (std::size_t count = 1; count <= 8; ++count) {
            expectTwin(
                in,
                [&](const float* signal, std::size_t start, float* out, std::size_t n) {
                    std::vector<kernel::MixTerm> terms;
                    for (std::size_t t = 0; t < count; ++t) {
                        terms.push_back({signal, gain.data() + (constant ? t : start), constant});
                    }
                    kernel::sumProducts(terms, out, n);
                },
                [&](double x, std::size_t i) {
                    double sum = 0.0;
                    for (std::size_t t = 0; t < count; ++t) sum += x * (constant ? gain[t] : gain[i]);
                    return sum;
                },
                units(2.0 * static_cast<double>(count), 1.0));
        }
    }
}

TEST(RunningMean, AddsUpAsOneSampleAtATimeDoes) {
    const auto entering = uniform(0.0f, 1.0f, 41), leaving = uniform(0.0f, 1.0f, 42);
    for (const std::size_t length : kLengths) {
        double sum = 50.0, expectedSum = 50.0;
        std::vector<float> out(length);
        kernel::runningMean(entering.data(), leaving.data(), sum, 0.25f, out.data(), length);
        for (std::size_t i = 0; i < length; ++i) {
            expectedSum = std::max(expectedSum + entering[i] - leaving[i], 0.0);
            ASSERT_NEAR(out[i], 0.25 * expectedSum, 0.25 * expectedSum * kEpsilon) << i;
        }
        ASSERT_NEAR(sum, expectedSum, 1e-12);
    }
}

TEST(RunningMean, NeverFallsBelowZero) {
    const std::vector<float> nothing(131, 0.0f), leaving = uniform(0.0f, 1.0f, 43);
    for (const std::size_t length : kLengths) {
        double sum = 1e-12;
        std::vector<float> out(length, kCanary);
        kernel::runningMean(nothing.data(), leaving.data(), sum, 1.0f, out.data(), length);
        for (const float mean : out) ASSERT_EQ(mean, 0.0f);
        EXPECT_EQ(sum, length > 0 ? 0.0 : 1e-12);
    }
}

}  // namespace
}  // namespace vanta
