// Kernels and their scalar twins in double precision: on every instruction set, at awkward lengths and
// alignments, and with nothing written beside the block.

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>
#include <span>
#include <type_traits>
#include <vector>

#include <fmt/format.h>

#include "kernel/allpass_kernels.hpp"
#include "kernel/biquad.hpp"
#include "kernel/convolver_kernels.hpp"
#include "kernel/fir_kernels.hpp"
#include "kernel/follower.hpp"
#include "kernel/level_math.hpp"
#include "kernel/mix.hpp"
#include "kernel/mixer_kernels.hpp"
#include "kernel/running_mean.hpp"
#include "kernel/scan.hpp"
#include "kernel/signal_steps.hpp"
#include "kernel/sliding_maximum.hpp"
#include "kernel/wave_shaper_kernels.hpp"
#include "tests/support/instruction_sets.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

constexpr double kEpsilon = std::numeric_limits<float>::epsilon();
constexpr std::size_t kLengths[] = {0, 1, 2, 3, 4, 5, 7, 8, 15, 16, 17, 33, 64, 131};
constexpr float kCanary = -12345.0f;
constexpr double kHalfPi = std::numbers::pi / 2;

/// Values between two ends.
Signal uniform(float low, float high, unsigned seed) {
    Signal values = whiteNoise(seed, 400);
    for (float& x : values) x = low + (high - low) * (0.5f + 0.5f * x);
    return values;
}

/// Amplitudes from -200 dB to +40 dB of either sign, with the corners of the range among them.
Signal amplitudes() {
    Signal values = uniform(-10.0f, 2.0f, 1);
    const Signal signs = whiteNoise(2, values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = std::copysign(std::pow(10.0f, values[i]), signs[i]);
    }
    const float corners[] = {0.0f,  -0.0f,  1.0f,   0.99999994f, 1.0000001f, 0.5f,       0.70710677f,
                             1e-9f, 1e-10f, 9e-11f, 1e-40f,      2.0f,       1048576.0f, 0.70710683f};
    for (std::size_t i = 0; i < std::size(corners); ++i) values[i * 23] = corners[i];
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

/// `kernel` is called as (in, out, count), or with the place of `in` in its signal behind it where other
/// signals go along; `twin` with one value of the signal, and its place likewise.
template <typename Kernel, typename Twin, typename Tolerance>
void expectTwin(const Signal& in, Kernel&& kernel, Twin&& twin, Tolerance&& tolerance) {
    forEachInstructionSet([&](const char* name) {
        SCOPED_TRACE(name);
        for (const std::size_t length : kLengths) {
            for (std::size_t offset = 0; offset < 5; ++offset) {
                Signal out(length + offset + 20, kCanary);
                const std::size_t start = (offset * 37 + length) % (in.size() - 131);
                if constexpr (std::is_invocable_v<Kernel, const float*, float*, std::size_t>) {
                    kernel(in.data() + start, out.data() + offset, length);
                } else {
                    kernel(in.data() + start, start, out.data() + offset, length);
                }
                for (std::size_t i = 0; i < out.size(); ++i) {
                    if (i < offset || i >= offset + length) {
                        ASSERT_EQ(out[i], kCanary) << "written outside at length " << length;
                        continue;
                    }
                    const std::size_t at = start + i - offset;
                    double expected = 0.0;
                    if constexpr (std::is_invocable_v<Twin, double>) {
                        expected = twin(static_cast<double>(in[at]));
                    } else {
                        expected = twin(static_cast<double>(in[at]), at);
                    }
                    ASSERT_NEAR(out[i], expected, tolerance(expected))
                        << "input " << in[at] << ", sample " << i - offset << " of " << length;
                }
            }
        }
    });
}

TEST(LevelMath, ConvertsBetweenAmplitudeAndDecibels) {
    // A level has the resolution of its logarithm's two parts, of which the larger is near the level itself;
    // the chords of the table lie 3e-8 below the curve.
    expectTwin(amplitudes(), kernel::decibelsFromAmplitude, levelDb, units(2, 6.0));
    const auto reduced = [](double x) { return -levelDb(static_cast<double>(1.0f - static_cast<float>(x))); };
    expectTwin(amplitudes(), kernel::decibelsFromReduction, reduced, units(3));
    // The argument of an exponential is rounded: x ln(10)/20 units come on top.
    const auto decibels = uniform(-200.0f, 100.0f, 2);
    expectTwin(decibels, kernel::amplitudeFromDecibels, amplitude, units(25));
    const auto reduction = [](double x) { return -std::expm1(-x * std::numbers::ln10 / 20); };
    expectTwin(decibels, kernel::reductionFromDecibels, reduction, units(1));
    // Tiny gain changes keep their digits.
    expectTwin(uniform(0.0f, 1e-4f, 3), kernel::reductionFromDecibels, reduction, units(8, 1e-9));
}

TEST(LevelMath, LogarithmIsContinuousOverEveryMantissa) {
    // A walk over the mantissas of two octaves: any fault of the table or of the exponent's part is a step.
    Signal in;
    for (std::uint32_t bits = 0x3F000000; bits < 0x40000000; bits += 509)
        in.push_back(std::bit_cast<float>(bits));
    Signal out(in.size());
    kernel::decibelsFromAmplitude(in.data(), out.data(), in.size());
    for (std::size_t i = 0; i < in.size(); ++i) ASSERT_NEAR(out[i], levelDb(in[i]), 1.5e-6) << in[i];
}

TEST(FollowerCoefficients, AgreeWithTheirDefinitionAtAnyTime) {
    Signal seconds = uniform(-7.0f, 1.7f, 6);
    for (float& x : seconds) x = std::pow(10.0f, x);
    for (std::size_t i = 0; i < seconds.size(); i += 29) seconds[i] = i % 2 ? 0.0f : -1.0f;
    expectTwin(
        seconds,
        [](const float* in, float* out, std::size_t n) { kernel::followerCoefficients(in, 48e3f, out, n); },
        [](double s) { return s <= 0 ? 1.0 : -std::expm1(-std::log(10.0) / (s * 48000)); }, units(4));
}

// --- Mixing and convolving ---

using Two = void (*)(const float*, const float*, float*, std::size_t);

TEST(MixKernels, CombineLikeTheirTwins) {
    auto b = uniform(-2.0f, 2.0f, 21);
    for (std::size_t i = 0; i < b.size(); i += 7) b[i] = 0.0f;
    const auto a = uniform(0.0f, 1.0f, 22), c = uniform(-1.0f, 1.0f, 23);
    const auto between = [&](const float* in, std::size_t start, float* out, std::size_t n) {
        kernel::crossfade(in, b.data() + start, c.data() + start, out, n);
    };
    expectTwin(
        a, between, [&](double x, std::size_t i) { return x + (b[i] - x) * c[i]; }, units(8, 1.0));
    const std::pair<Two, double (*)(double, double)> two[] = {
        {kernel::multiply, [](double x, double y) { return x * y; }},
        {kernel::add, [](double x, double y) { return x + y; }},
        {kernel::subtract, [](double x, double y) { return x - y; }},
        {kernel::maximum, [](double x, double y) { return std::max(x, y); }},
    };
    for (std::size_t k = 0; k < std::size(two); ++k) {
        SCOPED_TRACE(k);
        const auto kernel = [&](const float* in, std::size_t start, float* out, std::size_t n) {
            two[k].first(in, b.data() + start, out, n);
        };
        expectTwin(
            a, kernel, [&](double x, std::size_t i) { return two[k].second(x, b[i]); }, units(1, 1.0));
    }
}

TEST(MixKernels, ScaleAndClampLikeTheirTwins) {
    const auto a = uniform(-2.0f, 2.0f, 24), b = uniform(-1.0f, 1.0f, 25);
    struct Case {
        void (*kernel)(const float*, float*, std::size_t);
        double (*twin)(double);
        double units;
    };
    const Case cases[] = {
        {kernel::magnitude, [](double x) { return std::abs(x); }, 0},
        {kernel::complement, [](double x) { return 1 - x; }, 1},
        {[](const float* in, float* out, std::size_t n) { kernel::scale(in, 0.3f, out, n); },
         [](double x) { return x * 0.3f; }, 1},
        {[](const float* in, float* out, std::size_t n) { kernel::addConstant(in, 0.3f, out, n); },
         [](double x) { return x + 0.3f; }, 1},
        {[](const float* in, float* out, std::size_t n) { kernel::clamp(in, -0.5f, 1.5f, out, n); },
         [](double x) { return std::clamp(x, -0.5, 1.5); }, 0}};
    for (const Case& c : cases) expectTwin(a, c.kernel, c.twin, units(c.units));
    const auto moved = [&](const auto& kernel) {
        return [&b, &kernel](const float* in, std::size_t start, float* out, std::size_t n) {
            kernel(in, b.data() + start, 0.3f, out, n);
        };
    };
    expectTwin(
        a, moved(kernel::addScaled), [&](double x, std::size_t i) { return x + b[i] * 0.3f; }, units(2, 1.0));
    expectTwin(
        a, moved(kernel::moveToward), [&](double x, std::size_t i) { return x + (b[i] - x) * 0.3f; },
        units(4, 1.0));
}

TEST(ScanKernels, FindTheExtremesOfAnyBlock) {
    const auto noise = whiteNoise(7, 200);
    const auto smaller = [](float a, float b) { return std::abs(a) < std::abs(b); };
    for (const std::size_t offset : {0u, 1u, 3u}) {
        for (std::size_t count = 1; count < 100; ++count) {
            const float* in = noise.data() + offset;
            const auto [low, high] = std::minmax_element(in, in + count);
            const auto [small, large] = std::minmax_element(in, in + count, smaller);
            EXPECT_EQ(kernel::lowest(in, count), *low);
            EXPECT_EQ(kernel::highest(in, count), *high);
            EXPECT_EQ(kernel::lowestMagnitude(in, count), std::abs(*small));
            EXPECT_EQ(kernel::highestMagnitude(in, count), std::abs(*large));
        }
    }
}

TEST(ScanKernels, FindTheExtremesOfEachGroup) {
    const auto noise = whiteNoise(8, 200);
    const std::size_t group = kernel::kScanGroup;
    forEachInstructionSet([&](const char* set) {
        SCOPED_TRACE(set);
        for (std::size_t count = 1; count < 190; count += 7) {
            const float* in = noise.data() + 2 + count % 3;
            std::vector<float> high(7, kCanary), bend(7, kCanary);
            kernel::highestMagnitudeOfGroups(in, count, high.data());
            kernel::sharpestBendOfGroups(in, count, bend.data());
            const std::size_t groups = (count + group - 1) / group;
            for (std::size_t g = 0; g < groups; ++g) {
                float magnitude = 0.0f, sharpest = 0.0f;
                for (std::size_t i = g * group; i < std::min(count, (g + 1) * group); ++i) {
                    magnitude = std::max(magnitude, std::abs(in[i]));
                    sharpest = std::max(sharpest, std::abs(in[i] - 2.0f * *(in + i - 1) + *(in + i - 2)));
                }
                ASSERT_EQ(high[g], magnitude);
                ASSERT_NEAR(bend[g], sharpest, 1e-6f);
            }
            ASSERT_EQ(high[groups], kCanary);
            ASSERT_EQ(bend[groups], kCanary);
        }
    });
}

TEST(SignalSteps, TellRisingLevelAndFallingApart) {
    auto in = whiteNoise(9, 200);
    // Steps of nothing, of just what counts as nothing, and of no number.
    for (std::size_t i = 1; i < in.size(); i += 5) in[i] = in[i - 1];
    in[7] = in[6] + 2e-7f;
    in[40] = std::numeric_limits<float>::quiet_NaN();
    in[77] = in[78] = std::numeric_limits<float>::infinity();
    constexpr float kWithin = 1e-6f;
    forEachInstructionSet([&](const char* set) {
        for (std::size_t count = 1; count <= 64; ++count) {
            SCOPED_TRACE(fmt::format("{}, {} samples", set, count));
            for (const std::size_t start : {1u, 2u, 7u, 39u, 70u}) {
                const kernel::SignalSteps steps =
                    kernel::signalSteps(in.data() + start, in[start - 1], kWithin, count);
                for (std::size_t i = 0; i < 64; ++i) {
                    const float now = in[start + i], before = in[start + i - 1];
                    ASSERT_EQ(steps.notRising >> i & 1, i < count && now - before <= kWithin) << i;
                    ASSERT_EQ(steps.falling >> i & 1, i < count && now < before) << i;
                }
            }
        }
    });
}

TEST(SlidingMaximum, IsTheLargestOfEveryWindow) {
    // Mostly falling: the largest is often the oldest.
    auto in = whiteNoise(8, 1400);
    for (std::size_t i = 0; i < in.size(); ++i) in[i] = std::abs(in[i]) - static_cast<float>(i % 300) / 300;
    const auto largest = [&](std::size_t from, std::size_t count) {
        const auto first = in.begin() + static_cast<std::ptrdiff_t>(from);
        return *std::max_element(first, first + static_cast<std::ptrdiff_t>(count));
    };
    forEachInstructionSet([&](const char* set) {
        for (const std::size_t hold :
             {1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 14u, 15u, 16u, 62u, 63u, 64u, 255u, 511u}) {
            for (const std::size_t count : kLengths) {
                SCOPED_TRACE(fmt::format("{}, hold {}, {} samples", set, hold, count));
                const std::size_t start = hold % 5;
                Signal out(count + 1, kCanary), scratch(count + hold + 1, kCanary);
                kernel::slidingMaximum(in.data() + start, hold, scratch.data(), out.data(), count);
                for (std::size_t i = 0; i < count; ++i) ASSERT_EQ(out[i], largest(start + i, hold + 1)) << i;
                ASSERT_EQ(out.back(), kCanary);
                ASSERT_EQ(scratch.back(), kCanary);
            }
        }
        for (const std::size_t count : kLengths) {
            SCOPED_TRACE(fmt::format("{}, segments of {}", set, count));
            Signal rest(count + 1, kCanary), out = rest;
            kernel::maximumOfRest(in.data() + 3, rest.data(), count);
            float highest = in[600];
            kernel::maximumSoFar(in.data() + 601, in.data() + 20, highest, out.data(), count);
            for (std::size_t i = 0; i < count; ++i) {
                ASSERT_EQ(rest[i], largest(3 + i, count - i)) << i;
                ASSERT_EQ(out[i], std::max(largest(600, i + 2), in[20 + i])) << i;
            }
            ASSERT_EQ(highest, largest(600, count + 1));
            ASSERT_EQ(rest.back(), kCanary);
            ASSERT_EQ(out.back(), kCanary);
        }
    });
}

TEST(RunningMean, ReadsWhatLeavesFromTheRingItStoresTo) {
    const auto in = whiteNoise(71, 3000);
    forEachInstructionSet([&](const char* set) {
        for (const std::size_t window : {2u, 7u, 8u, 9u, 15u, 33u, 200u}) {
            SCOPED_TRACE(fmt::format("{}, window {}", set, window));
            // The newest window stands in front of what comes, as in a ring that does not wrap.
            Signal plain(window + in.size(), 0.0f), squares = plain, out(in.size());
            kernel::RunningSum sum, power;
            double expected = 0.0, square = 0.0;
            for (std::size_t at = 0, k = 0; at < in.size(); ++k) {
                std::size_t count = std::min(kLengths[k % std::size(kLengths)], in.size() - at);
                if (window < kernel::kMeanGroup) count = std::min(count, window);
                const auto run = [&](const auto& kernel, Signal& ring, kernel::RunningSum& total) {
                    kernel(in.data() + at, ring.data() + at, ring.data() + window + at, total,
                           1.0 / static_cast<double>(window), out.data(), count);
                };
                run(kernel::runningMean, plain, sum);
                for (std::size_t i = 0; i < count; ++i) {
                    const float leaves = at + i < window ? 0.0f : in[at + i - window];
                    expected += double{in[at + i]} - double{leaves};
                    ASSERT_NEAR(out[i], expected / static_cast<double>(window), kEpsilon) << at + i;
                }
                run(kernel::runningMeanSquare, squares, power);
                for (std::size_t i = 0; i < count; ++i) {
                    const float enters = in[at + i] * in[at + i];
                    const float leaves = at + i < window ? 0.0f : in[at + i - window] * in[at + i - window];
                    square += double{enters} - double{leaves};
                    ASSERT_NEAR(out[i], square / static_cast<double>(window), kEpsilon) << at + i;
                    ASSERT_EQ(squares[window + at + i], enters);
                }
                at += count;
            }
            const Signal::const_iterator first = squares.begin() + static_cast<std::ptrdiff_t>(window);
            ASSERT_NEAR(power.entered, std::accumulate(first, squares.cend(), 0.0), 1e-10);
            // From a sum that rounding has brought below nothing.
            kernel::RunningSum below{-1e-9};
            const Signal silence(20, 0.0f);
            Signal stored(20, 1.0f);
            kernel::runningMeanSquare(silence.data(), silence.data(), stored.data(), below, 1.0, out.data(),
                                      20);
            EXPECT_EQ(below.window, 0.0);
            EXPECT_EQ(std::count(out.begin(), out.begin() + 20, 0.0f), 20);
        }
    });
}

TEST(ConvolverKernels, FilterAndFadeLikeTheirTwins) {
    const auto in = uniform(-1.0f, 1.0f, 51), from = uniform(-1.0f, 1.0f, 52), taps = whiteNoise(3, 64);
    Signal padded(taps.size(), 0.0f);
    padded.insert(padded.end(), in.begin(), in.end());
    const auto filtered = [&](const float*, std::size_t start, float* out, std::size_t n) {
        kernel::fir(padded.data() + taps.size() + start, taps.data(), taps.size(), out, n);
    };
    const auto sum = [&](double, std::size_t i) {
        double total = 0.0;
        for (std::size_t j = 0; j < taps.size(); ++j) {
            total += static_cast<double>(taps[j]) * static_cast<double>(padded[taps.size() + i - j]);
        }
        return total;
    };
    expectTwin(in, filtered, sum, absolute(64 * kEpsilon));
    const auto faded = [&](const float* to, std::size_t start, float* out, std::size_t n) {
        std::copy_n(to, n, out);
        kernel::crossfadeStretch(from.data() + start, out, 37.0f + static_cast<float>(start), 882.0f, n);
    };
    const auto mixed = [&](double to, std::size_t i) {
        return from[i] + (to - from[i]) * (37.0 + static_cast<double>(i)) / 882.0;
    };
    expectTwin(in, faded, mixed, absolute(4 * kEpsilon));
}

TEST(ConvolverKernels, FindTheOneSampleThatDiffers) {
    for (const std::size_t count : {1u, 5u, 16u, 37u, 128u}) {
        Signal block(count, 0.25f);
        EXPECT_TRUE(kernel::allEqual(block.data(), count));
        for (std::size_t i = 0; i < count; ++i) {
            block[i] = std::numeric_limits<float>::quiet_NaN();
            EXPECT_FALSE(kernel::allEqual(block.data(), count)) << i << " of " << count;
            block[i] = 0.2500001f;
            EXPECT_EQ(kernel::allEqual(block.data(), count), count == 1) << i << " of " << count;
            block[i] = 0.25f;
        }
    }
}

// --- Wave shapers ---

double tube(double t) {
    if (t < -1.75481796) return -1.17545104;
    if (t >= 0.320018) return 0.629932761;
    const double w = t + 0.032847;
    return t < -0.08905 ? 0.75 * (std::pow(1 + w, 12) - 1) + 0.25 * w - 0.01 : 3.9375 * t - 6.153 * t * t;
}

double limited(double x) {
    return std::clamp(x, -1.0, 1.0);
}

TEST(WaveShaperKernels, BendLikeTheirTwins) {
    struct Case {
        kernel::UnaryKernel::Function kernel;
        double (*twin)(double);
    };
    const Case cases[] = {
        {kernel::vectorClipArcTanFast, [](double x) { return std::atan(x * kHalfPi) / kHalfPi; }},
        {kernel::vectorClipDivAbsFast, [](double x) { return x / (1 + std::abs(x)); }},
        {kernel::vectorClipSineFast, [](double x) { return std::sin(limited(x) * kHalfPi); }},
        {kernel::vectorClipPolynomeOrder2Fast,
         [](double x) { return limited(x) * (2 - std::abs(limited(x))); }},
        {kernel::vectorClipPolynomeOrder3Fast,
         [](double x) { return limited(x) * (1.5 - 0.5 * limited(x) * limited(x)); }},
        {kernel::vectorClipRectifyFast,
         [](double x) { return std::abs(limited(x)) * (2 - std::abs(limited(x))); }},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE(i);
        expectTwin(amplitudes(), cases[i].kernel, cases[i].twin, units(4, 1e-30));
        expectTwin(uniform(-3.0f, 3.0f, 8), cases[i].kernel, cases[i].twin, units(4));
    }
    // Its pieces end in sums of parts that nearly cancel, and the twelfth power multiplies what is rounded.
    expectTwin(uniform(-2.5f, 0.6f, 9), kernel::vectorClipTubeFast, tube, absolute(12 * kEpsilon));
    expectTwin(amplitudes(), kernel::vectorClipTubeFast, tube, units(12, 0.05));
}

TEST(WaveShaperKernels, ScaleByATableThatEndsAtBothEnds) {
    const auto in = uniform(-2.0f, 2.0f, 31), place = uniform(-0.2f, 1.2f, 32);
    Signal table = uniform(0.5f, 1.5f, 33);
    constexpr std::size_t kPoints = 41;
    table.resize(kPoints + 1);
    table.back() = table[kPoints - 1];
    const auto scaled = [&](const float* a, std::size_t start, float* out, std::size_t n) {
        kernel::scaleByTable(a, place.data() + start, table.data(), kPoints, out, n);
    };
    const auto twin = [&](double x, std::size_t i) {
        const double at = std::clamp(static_cast<double>(place[i]), 0.0, 1.0) * (kPoints - 1);
        const auto point = static_cast<std::size_t>(at);
        return x * std::lerp(double{table[point]}, double{table[point + 1]}, at - std::floor(at));
    };
    expectTwin(in, scaled, twin, units(kPoints, 1.0));
}

// --- Half-band filters ---

constexpr std::size_t kCounts[] = {0, 1, 2, 3, 7, 8, 15, 16, 17, 31, 33, 64, 65, 100, 511, 512, 513, 1030};

std::vector<float> symmetricTaps(std::size_t count) {
    auto taps = whiteNoise(count, count);
    for (std::size_t i = 0; i < count / 2; ++i) taps[count - 1 - i] = taps[i];
    return taps;
}

/// 4 k + 1 taps, zero at even distances from the centre.
std::vector<float> halfBandTaps(std::size_t count) {
    auto taps = symmetricTaps(count);
    for (std::size_t i = 0; i < count; ++i) {
        if (i % 2 == 0 && i != count / 2) taps[i] = 0.0f;
    }
    return taps;
}

double dot(const float* taps, const float* x, std::size_t count) {
    double sum = 0.0;
    for (std::size_t i = 0; i < count; ++i) sum += static_cast<double>(taps[i]) * static_cast<double>(x[i]);
    return sum;
}

/// Rounding of a sum of `terms` products of numbers up to 1.
double tolerance(std::size_t terms) {
    return static_cast<double>(terms) * 2.0 * kEpsilon;
}

TEST(FirKernels, InterpolateAsTheirScalarTwin) {
    forEachInstructionSet([](const char* set) {
        for (const std::size_t taps : {2u, 4u, 8u, 10u, 12u, 34u, 62u}) {
            const auto branch = symmetricTaps(taps);
            for (std::size_t k = 0; k < 3 * std::size(kCounts); ++k) {
                const std::size_t count = kCounts[k / 3], offset = k % 3;
                SCOPED_TRACE(fmt::format("{}, {} taps, {} samples", set, taps, count));
                // The block ends where its last window ends: a read past it is a sanitizer's error.
                const auto input = whiteNoise(count + taps, offset + count + taps - 1);
                const float* window = input.data() + offset;
                std::vector<float> out(2 * count + 1, kCanary);
                kernel::interpolateHalfBand(window, branch.data(), taps, out.data(), count);
                for (std::size_t j = 0; j < count; ++j) {
                    ASSERT_EQ(out[2 * j], window[j + taps / 2 - 1]);
                    ASSERT_NEAR(out[2 * j + 1], dot(branch.data(), window + j, taps), tolerance(taps)) << j;
                }
                ASSERT_EQ(out.back(), kCanary);
                std::vector<float> peaks(count + 1, kCanary);
                kernel::peaksOfHalfBand(window, branch.data(), taps, peaks.data(), count);
                for (std::size_t j = 0; j < count; ++j) {
                    ASSERT_EQ(peaks[j], std::max(std::abs(out[2 * j]), std::abs(out[2 * j + 1]))) << j;
                }
                ASSERT_EQ(peaks.back(), kCanary);
            }
        }
    });
}

TEST(FirKernels, DecimateAsTheirScalarTwin) {
    forEachInstructionSet([](const char* set) {
        for (const std::size_t taps : {5u, 9u, 17u, 21u, 25u, 77u, 125u}) {
            const auto filter = halfBandTaps(taps);
            std::vector<float> scratch(kernel::decimatorScratch(taps));
            for (const std::size_t count : std::span(kCounts).subspan(1)) {
                SCOPED_TRACE(fmt::format("{}, {} taps, {} samples", set, taps, count));
                const auto input = whiteNoise(count + taps, 2 * count + taps - 2);
                std::vector<float> out(count + 1, kCanary);
                kernel::decimateHalfBand(input.data(), filter.data(), taps, scratch.data(), out.data(),
                                         count);
                for (std::size_t j = 0; j < count; ++j) {
                    ASSERT_NEAR(out[j], dot(filter.data(), input.data() + 2 * j, taps), tolerance(taps)) << j;
                }
                ASSERT_EQ(out.back(), kCanary);
            }
        }
    });
}

/// Both branches in double precision, sample by sample, at the lower rate.
struct BranchTwin {
    explicit BranchTwin(std::span<const float> coefficients) : coefficient(coefficients) {}
    double step(std::size_t branch, double x) {
        for (std::size_t i = branch; i < coefficient.size(); i += 2) {
            const double c = coefficient[i];
            y1[i] = c * x + x1[i] - c * y1[i];
            x1[i] = x;
            x = y1[i];
        }
        return x;
    }
    std::span<const float> coefficient;
    double x1[6] = {}, y1[6] = {};
};

TEST(Biquad, RunsInGroupsAsSampleBySample) {
    // A wide low-pass, and the sharp resonance of a low one, whose response hardly falls within a group.
    const double filters[][5] = {{0.29, 0.59, 0.29, -0.13, 0.30}, {0.99, -1.98, 0.99, -1.9995, 0.99951}};
    const auto in = whiteNoise(61, 8 * 70 + 3);
    forEachInstructionSet([&](const char* set) {
        for (const auto& [b0, b1, b2, a1, a2] : filters) {
            const kernel::BiquadGroup group(b0, b1, b2, a1, a2);
            kernel::BiquadHistory history{0.3, -0.2, 0.7, 0.6}, twin = history;
            std::size_t at = 0;
            for (const std::size_t groups : {0u, 1u, 2u, 15u, 16u, 17u, 19u}) {
                SCOPED_TRACE(fmt::format("{}, {} groups", set, groups));
                // In place every second time, at any alignment.
                const std::size_t count = 8 * groups, offset = groups % 4;
                const float* block = in.data() + at + offset % 3;
                Signal out(offset + count + 1, kCanary);
                if (groups % 2) std::copy_n(block, count, out.data() + offset);
                const float* from = groups % 2 ? out.data() + offset : block;
                kernel::biquadGroups(from, group, history, out.data() + offset, groups);
                for (std::size_t i = 0; i < count; ++i) {
                    const double x = static_cast<double>(block[i]);
                    const double y = b0 * x + b1 * twin.x1 + b2 * twin.x2 - a1 * twin.y1 - a2 * twin.y2;
                    twin = {x, twin.x1, y, twin.y1};
                    ASSERT_NEAR(out[offset + i], y, kEpsilon * std::max(std::abs(y), 1e-6)) << i;
                }
                ASSERT_EQ(out.back(), kCanary);
                at += count;
            }
            // The resonance makes up to 1e5 of what is rounded off numbers around 100.
            ASSERT_NEAR(history.y2, twin.y2, 1e7 * std::numeric_limits<double>::epsilon());
        }
    });
}

TEST(AllpassKernels, SplitAndMergeAsTheirScalarTwin) {
    const float coefficients[] = {0.085f, 0.29f, 0.52f, 0.71f, 0.85f, 0.95f};
    forEachInstructionSet([&](const char* set) {
        for (std::size_t sections = 0; sections <= 6; ++sections) {
            SCOPED_TRACE(fmt::format("{}, {} all-passes", set, sections));
            kernel::AllpassBranches split;
            split.pairCount = static_cast<int>(sections / 2);
            split.hasLast = sections % 2 != 0;
            for (std::size_t i = 0; i < sections; ++i) {
                auto& pair = i + 1 == sections && split.hasLast ? split.last : split.pairs[i / 2];
                pair.coefficient[i % 2] = coefficients[i];
            }
            kernel::AllpassBranches merge = split;
            BranchTwin splitTwin{std::span(coefficients).first(sections)}, mergeTwin = splitTwin;
            const auto in = whiteNoise(sections, 2 * 2000);
            float odd = 0.0f;
            std::size_t at = 0;
            for (const std::size_t count : kCounts) {
                if (at + count > 2000) break;
                Signal high(2 * count + 1, kCanary), low(count + 1, kCanary);
                kernel::splitBranches(in.data() + at, split, high.data(), count);
                kernel::mergeBranches(in.data() + 2 * at, merge, low.data(), count);
                for (std::size_t i = 0; i < count; ++i) {
                    for (std::size_t branch = 0; branch < 2; ++branch) {
                        ASSERT_NEAR(high[2 * i + branch], splitTwin.step(branch, in[at + i]), 2e-5) << at + i;
                    }
                    const float* pair = in.data() + 2 * (at + i);
                    const double merged = mergeTwin.step(0, pair[0]) + mergeTwin.step(1, odd);
                    ASSERT_NEAR(low[i], merged / 2, 2e-5) << at + i;
                    odd = pair[1];
                }
                ASSERT_EQ(high.back(), kCanary);
                ASSERT_EQ(low.back(), kCanary);
                at += count;
            }
        }
    });
}

}  // namespace
}  // namespace vanta::test
