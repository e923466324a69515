#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "kernel/fir_kernels.hpp"
#include "tests/support/instruction_sets.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

constexpr float kCanary = 12345.0f;
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
    return static_cast<double>(terms) * 2.0 * static_cast<double>(std::numeric_limits<float>::epsilon());
}

void checkInterpolation(const char* set) {
    SCOPED_TRACE(set);
    for (const std::size_t taps : {2u, 4u, 8u, 10u, 12u, 34u, 62u}) {
        const auto branch = symmetricTaps(taps);
        for (const std::size_t count : kCounts) {
            for (std::size_t offset = 0; offset < 3; ++offset) {
                // The block ends where its last window ends: a read past it is a sanitizer's error.
                const auto input = whiteNoise(count + taps, offset + count + taps - 1);
                const float* window = input.data() + offset;
                std::vector<float> out(2 * count + 1, kCanary);
                kernel::interpolateHalfBand(window, branch.data(), taps, out.data(), count);
                for (std::size_t j = 0; j < count; ++j) {
                    ASSERT_EQ(out[2 * j], window[j + taps / 2 - 1]);
                    ASSERT_NEAR(out[2 * j + 1], dot(branch.data(), window + j, taps), tolerance(taps))
                        << taps << " taps, " << count << " samples, at " << j;
                }
                ASSERT_EQ(out.back(), kCanary);
            }
        }
    }
}

TEST(FirKernels, InterpolateAsTheirScalarTwin) {
    forEachInstructionSet(checkInterpolation);
}

void checkDecimation(const char* set) {
    SCOPED_TRACE(set);
    for (const std::size_t taps : {5u, 9u, 17u, 21u, 25u, 77u, 125u}) {
        const auto filter = halfBandTaps(taps);
        std::vector<float> scratch(kernel::decimatorScratch(taps));
        for (const std::size_t count : kCounts) {
            if (count == 0) continue;
            const auto input = whiteNoise(count + taps, 2 * count + taps - 2);
            std::vector<float> out(count + 1, kCanary);
            kernel::decimateHalfBand(input.data(), filter.data(), taps, scratch.data(), out.data(), count);
            for (std::size_t j = 0; j < count; ++j) {
                ASSERT_NEAR(out[j], dot(filter.data(), input.data() + 2 * j, taps), tolerance(taps))
                    << taps << " taps, " << count << " samples, at " << j;
            }
            ASSERT_EQ(out.back(), kCanary);
        }
    }
}

TEST(FirKernels, DecimateAsTheirScalarTwin) {
    forEachInstructionSet(checkDecimation);
}

}  // namespace
}  // namespace vanta::test
