// Followers solved for many samples at once, against the chain of steps that they stand for.

#include "kernel/follower_solver.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include <fmt/format.h>

#include "tests/support/instruction_sets.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

using kernel::FollowerLaw;
using kernel::FollowerState;
using kernel::FollowerTrack;

constexpr float kRate = 44100.0f;
constexpr float kCanary = -12345.0f;
/// Units in the last place of the level for the output's rounding and what adds up in a group, and what a
/// round may leave.
constexpr double kUnits = 2 * std::numeric_limits<float>::epsilon();
constexpr double kLeft = 2e-6;

/// Values that wander between two ends, rest there for a while, and jump.
Signal course(std::uint64_t seed, float low, float high, std::size_t count) {
    Random random(seed);
    Signal values;
    while (values.size() < count) {
        const bool noisy = random.between(0, 2) == 0;
        auto level = static_cast<float>(0.5 + 0.5 * random.bipolar());
        if (random.between(0, 3) == 0) level = 0.0f;
        for (int i = random.between(1, 400); i > 0; --i) {
            if (noisy) level = static_cast<float>(0.5 + 0.5 * random.bipolar());
            values.push_back(low + (high - low) * level);
        }
    }
    values.resize(count);
    return values;
}

/// A channel: what goes in, and the controls.
struct Channel {
    Signal in, attack, attackCurve, attackSmoothing, release, releaseCurve, releaseSmoothing;

    FollowerTrack track(FollowerState& state, std::size_t at, float* out) const {
        return {&state,
                in.data() + at,
                out,
                attack.data() + at,
                attackCurve.data() + at,
                attackSmoothing.data() + at,
                release.data() + at,
                releaseCurve.data() + at,
                releaseSmoothing.data() + at};
    }
    Signal twin(FollowerLaw law) const {
        const bool plain = law == FollowerLaw::Steady || law == FollowerLaw::Plain;
        const bool curved = law == FollowerLaw::Curved || law == FollowerLaw::CurvedAndSmoothed;
        const bool smoothed = law == FollowerLaw::Smoothed || law == FollowerLaw::CurvedAndSmoothed;
        Signal out;
        double level = 0.0;
        for (std::size_t i = 0; i < in.size(); ++i) {
            const double x = in[i] - level;
            const bool up = x > (plain ? 0.0 : -0x1p-23);
            double time = up ? attack[i] : release[i];
            const double bent = time * std::abs(x) / 10;
            if (curved) time = bent + (time - bent) * (up ? attackCurve[i] : releaseCurve[i]);
            if (smoothed) time += std::exp(-std::abs(x)) * (up ? attackSmoothing[i] : releaseSmoothing[i]);
            level += time * kRate < 0.0261658 ? x : -std::expm1(-std::log(10.0) / (time * kRate)) * x;
            out.push_back(static_cast<float>(level));
        }
        return out;
    }
};

struct Range {
    const char* name;
    float attack[2], release[2], attackCurve[2], releaseCurve[2], attackSmoothing[2], releaseSmoothing[2];
};

/// From slow to faster than a sample, from no bend to all; a smoothing below 0 ends in leaps.
constexpr Range kRanges[] = {
    {"slow", {0.01f, 0.05f}, {0.2f, 2.0f}, {0.3f, 1.0f}, {0.2f, 0.9f}, {0.0f, 0.02f}, {0.0f, 0.5f}},
    {"quick", {0.0f, 0.0f}, {0.0005f, 0.01f}, {1.0f, 1.0f}, {0.5f, 1.0f}, {0.0f, 0.0f}, {0.0f, 0.3f}},
    {"ramps", {0.0f, 0.001f}, {0.04f, 0.1f}, {0.0f, 0.2f}, {0.0f, 0.0f}, {0.0f, 1.0f}, {0.0f, 0.0f}},
};

Channel channel(const Range& range, FollowerLaw law, std::uint64_t seed, std::size_t count) {
    const auto control = [&](const float(&ends)[2]) {
        return law == FollowerLaw::Steady ? Signal(count, ends[1])
                                          : course(++seed * 7, ends[0], ends[1], count);
    };
    return {course(seed, 0.0f, 24.0f, count), control(range.attack),  control(range.attackCurve),
            control(range.attackSmoothing),   control(range.release), control(range.releaseCurve),
            control(range.releaseSmoothing)};
}

/// Two channels in blocks of these sizes in turn.
std::vector<Signal> solved(FollowerLaw law, const std::vector<Channel>& channels,
                           std::span<const int> sizes) {
    constexpr std::size_t kOffset = 3;
    std::vector<Signal> out(channels.size());
    std::vector<FollowerState> states(channels.size());
    const std::size_t count = channels[0].in.size();
    for (std::size_t at = 0, block = 0; at < count; ++block) {
        const auto size = std::min(static_cast<std::size_t>(sizes[block % sizes.size()]), count - at);
        std::vector<Signal> blocks(channels.size(), Signal(size + 40, kCanary));
        std::vector<FollowerTrack> tracks;
        for (std::size_t c = 0; c < channels.size(); ++c)
            tracks.push_back(channels[c].track(states[c], at, blocks[c].data() + kOffset));
        EXPECT_TRUE(
            kernel::follow(law, tracks.data(), tracks.size(), kRate, static_cast<std::int64_t>(at), size));
        for (std::size_t c = 0; c < channels.size(); ++c) {
            const auto begin = blocks[c].begin() + kOffset, end = begin + static_cast<std::ptrdiff_t>(size);
            EXPECT_EQ(
                std::count(blocks[c].begin(), begin, kCanary) + std::count(end, blocks[c].end(), kCanary),
                40);
            out[c].insert(out[c].end(), begin, end);
        }
        at += size;
    }
    return out;
}

class FollowerSolver : public testing::TestWithParam<FollowerLaw> {};

INSTANTIATE_TEST_SUITE_P(Laws, FollowerSolver,
                         testing::Values(FollowerLaw::Steady, FollowerLaw::Plain, FollowerLaw::Curved,
                                         FollowerLaw::Smoothed, FollowerLaw::CurvedAndSmoothed));

TEST_P(FollowerSolver, TakesTheStepsOfItsTwinAtAnyLengthAndBesideAnother) {
    constexpr int kSizes[] = {1, 2, 31, 33, 16, 15, 7, 64, 256, 5, 100};
    for (const Range& range : kRanges) {
        const std::vector<Channel> both{channel(range, GetParam(), 1, 20000),
                                        channel(range, GetParam(), 2, 20000)};
        const Signal twins[] = {both[0].twin(GetParam()), both[1].twin(GetParam())};
        int solving = 0;
        forEachInstructionSet([&](const char* set) {
            SCOPED_TRACE(fmt::format("{} {}", set, range.name));
            if (!kernel::follow(GetParam(), nullptr, 0, kRate, 0, 0)) return;
            ++solving;
            const auto together = solved(GetParam(), both, kSizes);
            for (std::size_t c = 0; c < 2; ++c) {
                EXPECT_EQ(together[c], solved(GetParam(), {both[c]}, kSizes)[0]);
                for (std::size_t i = 0; i < twins[c].size(); ++i)
                    ASSERT_NEAR(together[c][i], twins[c][i], kUnits * std::abs(twins[c][i]) + kLeft)
                        << "channel " << c << ", sample " << i;
            }
        });
        EXPECT_GT(solving, 0);
    }
}

}  // namespace
}  // namespace vanta::test
