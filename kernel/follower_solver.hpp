#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

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

/// A follower's memory. As it is made it is at the beginning.
struct FollowerState {
    static constexpr std::size_t kLargestGroup = 32;
    using Row = std::array<float, kLargestGroup>;

    double level = 0.0;
    /// How far the level had gone at each sample of the last group since the group began: the first guess at
    /// the next.
    Row course{};

    /// The group that the end of the last block has cut.
    struct Begun {
        double level = 0.0;      ///< before it
        std::int64_t next = -1;  ///< position of the sample that goes on with it; -1 if there is none
        FollowerLaw law = FollowerLaw::Plain;
        std::size_t first = 0;  ///< place of its first sample
        std::array<Row, 7> rows{};
    };
    Begun begun;
};

/// How many channels can be followed side by side.
inline constexpr std::size_t kMostTracks = 2;

/// One channel's block, a value a sample: input and output in dB, times in s, curves 0 to 1. What the law
/// does not use may be null.
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
/// Within 2 units in the last place of the level and 2e-6 dB of the exact recursion. Groups of samples are
/// counted by `position`, of the first sample since the reset: however a signal is cut into blocks, the
/// result is the same to the bit. Follows all tracks side by side; none hears the other, and each gives what
/// it gives alone. Any length and alignment.
///
/// False, with nothing done, on machines without vectors, where one step after the other is quicker.
extern const Kernel<bool(FollowerLaw law, const FollowerTrack* tracks, std::size_t trackCount,
                         float sampleRate, std::int64_t position, std::size_t count)>
    follow;

}  // namespace vanta::kernel
