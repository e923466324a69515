#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <vector>

#include "dsp/metering/loudness_gate.hpp"

namespace vanta::test {
namespace {

constexpr double kGateRate = 1000.0;
constexpr int kStride = 100;

/// A stream in which a gate of `strides` strides finds these levels, and nothing else of interest.
std::vector<float> streamOf(const std::vector<double>& levels, int strides) {
    std::vector<float> stream(static_cast<std::size_t>(strides * kStride), 1e-3f);
    for (const double level : levels) {
        stream.push_back(static_cast<float>(meanSquareOf(level)));
        stream.insert(stream.end(), kStride - 1, 1e-3f);
    }
    return stream;
}

std::vector<double> randomLevels(unsigned seed, int count) {
    std::mt19937 random(seed);
    std::normal_distribution<double> distribution(-25.0, 14.0);
    std::vector<double> levels(static_cast<std::size_t>(count));
    std::generate(levels.begin(), levels.end(), [&] { return std::min(distribution(random), 11.9); });
    return levels;
}

LoudnessGate gateOf(const std::vector<double>& levels) {
    LoudnessGate gate(4);
    gate.reset(kGateRate);
    const auto stream = streamOf(levels, 4);
    for (std::size_t at = 0; at < stream.size(); at += 256) {
        gate.feed(stream.data() + at, static_cast<int>(std::min<std::size_t>(256, stream.size() - at)));
    }
    return gate;
}

struct Gated {
    std::vector<double> levels;
    double mean = 0.0;
};

/// The definition: values above the absolute gate, then those above their own mean less so many LU, in steps
/// of the histogram.
Gated gatedBySorting(std::vector<double> levels, double relative) {
    std::erase_if(levels, [](double level) { return level < -70.0; });
    const auto meanOf = [&] {
        double sum = 0.0;
        for (const double level : levels) sum += meanSquareOf(level);
        return sum / static_cast<double>(std::max<std::size_t>(levels.size(), 1));
    };
    const double threshold =
        std::floor((static_cast<double>(loudnessOf(meanOf())) + relative) * 100.0) / 100.0;
    std::erase_if(levels, [=](double level) { return level < threshold; });
    std::ranges::sort(levels, std::greater<>());
    return {levels, meanOf()};
}

TEST(LoudnessGate, AgreesWithSortingTheValues) {
    for (unsigned seed = 1; seed <= 40; ++seed) {
        const auto levels = randomLevels(seed, static_cast<int>(seed * seed * 3));
        const LoudnessGate gate = gateOf(levels);
        const Gated mean = gatedBySorting(levels, -10.0);
        // A level at the very edge of a bin may fall on either side of it.
        EXPECT_NEAR(loudnessOf(gate.gatedMeanSquare()), loudnessOf(mean.mean), 0.03f) << seed;

        const Gated range = gatedBySorting(levels, -20.0);
        const auto total = gate.query(-20.0);
        EXPECT_NEAR(total.count, static_cast<double>(range.levels.size()), 1.0) << seed;
        for (const double part : {0.0, 0.05, 0.3, 0.5, 0.9, 1.0}) {
            const auto rank = static_cast<int>(part * static_cast<double>(range.levels.size() - 1));
            EXPECT_NEAR(gate.levelAtRank(rank), range.levels[static_cast<std::size_t>(rank)], 0.0101) << seed;
        }
        const auto count = static_cast<std::size_t>(total.count);
        EXPECT_EQ(gate.range().high, gate.levelAtRank(static_cast<int>(count / 20)));
        EXPECT_EQ(gate.range().low, gate.levelAtRank(static_cast<int>(9 * count / 10)));
    }
}

TEST(LoudnessGate, StartsOverAtOnceThoughItClearsLittleByLittle) {
    LoudnessGate gate(4);
    gate.reset(48000.0);
    const std::vector<float> loud(48000 * 3, 0.5f);
    const std::vector<float> soft(48000 * 3, 0.001f);
    gate.feed(loud.data(), 48000 * 3);
    gate.reset(48000.0);
    for (int i = 0; i < 48000 * 3; i += 100) gate.feed(soft.data() + i, 100);
    EXPECT_NEAR(loudnessOf(gate.gatedMeanSquare()), loudnessOf(0.001), 0.001f);
    EXPECT_EQ(gate.query(-1000.0).count, 26);
}

TEST(LoudnessGate, CountsWhatLiesAboveItsTopThere) {
    const LoudnessGate gate = gateOf({20.0, 20.0, 20.0});
    EXPECT_EQ(gate.query(-10.0).count, 3);
    EXPECT_NEAR(gate.levelAtRank(0), 11.91f, 1e-3f);
}

}  // namespace
}  // namespace vanta::test
