#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "kernel/convolver_kernels.hpp"
#include "kernel/mix.hpp"
#include "kernel/mixer_kernels.hpp"
#include "kernel/scan.hpp"
#include "tests/kernel/twin.hpp"

namespace vanta::test {
namespace {

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

}  // namespace
}  // namespace vanta::test
