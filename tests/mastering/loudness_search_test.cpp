#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <optional>

#include "mastering/loudness_search.hpp"

namespace vanta::test {
namespace {

/// A programme that gets louder with the gain until it meets the ceiling, and less and less from there on.
double limitedLoudness(double gainDb, double startLufs, double highestLufs) {
    const double free = startLufs + gainDb;
    return highestLufs - std::log1p(std::exp(1.5 * (highestLufs - free))) / 1.5;
}

struct Found {
    double gainDb = 0.0;
    std::optional<double> lufs;
    int passes = 0;
    bool reached = false;
};

template <typename Curve>
Found findLoudness(const LoudnessTarget& target, Curve&& loudness) {
    LoudnessSearch search(target);
    Found found;
    while (found.passes < 50) {
        ++found.passes;
        found.gainDb = search.gainDb();
        found.lufs = loudness(found.gainDb);
        const auto state = search.note(found.lufs);
        found.reached = state == LoudnessSearch::State::Reached;
        if (state == LoudnessSearch::State::OutOfReach) {
            found.gainDb = search.gainDb();
            found.lufs = loudness(found.gainDb);
        }
        if (state != LoudnessSearch::State::Searching) break;
    }
    return found;
}

TEST(LoudnessSearch, ComesWithinTheToleranceInFewPasses) {
    int most = 0;
    for (double start = -35.0; start <= -16.0; start += 0.7) {
        for (double wanted = -30.0; wanted <= -6.2; wanted += 0.9) {
            const auto loudness = [&](double gainDb) -> std::optional<double> {
                return limitedLoudness(gainDb, start, -6.0);
            };
            const LoudnessTarget target{.lufs = wanted, .firstGainDb = wanted - start};
            const Found found = findLoudness(target, loudness);
            const bool within =
                loudness(0.0) <= wanted + target.toleranceLu && loudness(30.0) >= wanted - target.toleranceLu;
            EXPECT_EQ(found.reached, within) << start << " to " << wanted;
            if (!within) continue;
            EXPECT_NEAR(*found.lufs, wanted, target.toleranceLu) << start;
            EXPECT_EQ(found.lufs, loudness(found.gainDb));
            most = std::max(most, found.passes);
        }
    }
    EXPECT_LE(most, 9);
}

TEST(LoudnessSearch, FindsWhatIsLouderThanTheHighestGain) {
    // Driven too hard this gets softer again: its loudest is at 12 dB.
    const auto humped = [](double gainDb) -> std::optional<double> {
        const double beyond = gainDb - 12.0;
        return -6.0 - (beyond < 0.0 ? 0.006 * beyond * beyond : 0.012 * beyond * beyond);
    };
    for (double wanted = -6.8; wanted <= -6.04; wanted += 0.07) {
        for (double first = 0.0; first <= 30.0; first += 2.5) {
            const Found found = findLoudness({.lufs = wanted, .firstGainDb = first}, humped);
            EXPECT_TRUE(found.reached) << wanted << " from " << first;
            EXPECT_LE(found.passes, 12) << wanted << " from " << first;
            const Found none = findLoudness({.lufs = wanted + 1.0, .firstGainDb = first}, humped);
            EXPECT_FALSE(none.reached);
            EXPECT_GE(none.lufs.value_or(-99.0), -7.0);
            EXPECT_NEAR(none.gainDb, 12.0, 5.0) << "the loudest is what could be had";
        }
    }
}

TEST(LoudnessSearch, NamesTheNearestEndOfWhatCannotBeReached) {
    int calls = 0;
    const auto flat = [&](double gainDb) -> std::optional<double> {
        ++calls;
        return limitedLoudness(gainDb, -20.0, -9.0);
    };
    const Found loud = findLoudness({.lufs = -5.0, .firstGainDb = 15.0}, flat);
    EXPECT_FALSE(loud.reached);
    EXPECT_EQ(loud.gainDb, 30.0);
    EXPECT_LE(calls, 8);
    const Found soft = findLoudness({.lufs = -40.0, .firstGainDb = -20.0}, flat);
    EXPECT_FALSE(soft.reached);
    EXPECT_EQ(soft.gainDb, 0.0);
    EXPECT_EQ(soft.passes, 1) << "the lower end says all";
}

TEST(LoudnessSearch, RisesOutOfWhatHasNoReading) {
    // Below the gate there is no loudness; more gain brings one.
    const auto gated = [](double gainDb) -> std::optional<double> {
        const double lufs = -85.0 + gainDb;
        return lufs > -70.0 ? std::optional(lufs) : std::nullopt;
    };
    const Found found = findLoudness({.lufs = -60.0, .firstGainDb = 0.0}, gated);
    EXPECT_TRUE(found.reached);
    const Found silent = findLoudness({.lufs = -14.0}, [](double) -> std::optional<double> { return {}; });
    EXPECT_FALSE(silent.reached);
    EXPECT_FALSE(silent.lufs);
    EXPECT_LE(silent.passes, 3);
}

}  // namespace
}  // namespace vanta::test
