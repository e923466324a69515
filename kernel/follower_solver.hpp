#pragma once

#include <array>
#include <cstddef>

#include "kernel/kernel.hpp"

namespace vanta::kernel {

/// What the time constants of a follower depend on besides their controls.
enum class FollowerLaw {
    Steady,    ///< nothing, and they stand still throughout the block
    Plain,     ///< nothing
    Curved,    ///< the distance between input and level: a curve below 1 scales them with it
    Smoothed,  ///< the distance: smoothing times exp(-distance) is added to them
    CurvedAndSmoothed,
};

/// A follower's memory. All 0 is the beginning.
struct FollowerState {
    double level = 0.0;
    /// How far the level had gone at each sample of the last group since the group began: the first guess at
    /// the next. It counts for the number of rounds, not for what they find.
    std::array<float, 32> course{};
};

/// How many channels can be followed side by side.
inline constexpr std::size_t kMostTracks = 2;

/// One channel's block, a value a sample: input and output in dB, times in s, curves 0 to 1. What the law
/// does not use may be null; Steady takes the first of the times.
struct FollowerTrack {
    FollowerState* state;
    const float* in;
    float* out;
    const float* attack;
    const float* attackCurve;
    const float* attackSmoothing;
    const float* release;
    const float* releaseCurve;
    const float* releaseSmoothing;
};

/// out = the level after each sample, level += share(time) (in - level), where share(t) is that of
/// followerCoefficients and the time is one of attack and release: for a distance x = in - level above 0
/// (Steady and Plain) or above -2^-23 dB (the others) attack, else release, and with
///     u = t |x| / 10,  time = u + (t - u) curve + exp(-|x|) smoothing.
/// Within 2 units in the last place of the level and 2e-6 dB of the exact recursion: blocks that are cut
/// otherwise may differ by that. Follows all tracks side by side; none hears the other, and each gives what
/// it gives alone. Any length and alignment.
///
/// False, with nothing done, on machines without vectors, where one step after the other is quicker.
extern const Kernel<bool(FollowerLaw law, const FollowerTrack* tracks, std::size_t trackCount,
                         float sampleRate, std::size_t count)>
    follow;

}  // namespace vanta::kernel
