#pragma once

#include <cstdint>
#include <span>

#include "dsp/envelope/capacitor_style.hpp"
#include "foundation/realtime.hpp"
#include "kernel/follower_solver.hpp"

namespace vanta {

/// The time constants of one block, a value a sample: times in seconds, curves 0 to 1.
struct AttackReleaseControls {
    /// What makes a time constant depend on the signal.
    enum Modifier : unsigned {
        kAttackCurve = 1,
        kAttackSmoothing = 2,
        kReleaseCurve = 4,
        kReleaseSmoothing = 8,
        kHold = 16,
        kModifierSets = 32
    };

    const float* attack;
    const float* attackCurve;
    const float* attackSmoothing;
    const float* release;
    const float* releaseCurve;
    const float* releaseSmoothing;
    const float* hold;
    unsigned modifiers;  ///< those that do something in this block
    bool steadyAttack;   ///< one value throughout
    bool steadyRelease;
    bool steadyCurves;

    bool holds() const { return (modifiers & kHold) != 0; }
    /// What the times depend on where nothing is held.
    kernel::FollowerLaw law() const;
};

/// The attack and release curves of a capacitor: its level, and the ways to move it through a block. They
/// agree where more than one applies.
class AttackReleaseFollower {
public:
    /// One block of one channel. Input in dB; the output is the level after each sample.
    struct Block {
        const float* in;
        float* out;
        int samples;
        float sampleRate;
        std::int64_t position;  ///< of the first sample in the stream
        AttackReleaseControls controls;
    };
    struct Lane {
        AttackReleaseFollower* follower;
        Block block;
    };

    /// `position` in the stream is that of the next sample.
    void reset(std::int64_t position) {
        state_ = {};
        origin_ = position;
        holdRamp_ = 0.0;
        inRelease_ = false;
    }
    /// Whether the level is within this distance of 0 and was so when its last group began: one that is cut
    /// short would be rounded otherwise than a whole one.
    bool restsWithin(double distance) const;
    std::int64_t origin() const { return origin_; }

    /// With all modifiers. Smoothing ends at steps of 10 dB.
    VANTA_REALTIME void followGenerally(const Block& block, const CapacitorStyle& style);
    /// Without hold: one or two channels of the same law at once, many samples at once where the machine has
    /// vectors. Smoothing goes on beyond steps of 10 dB, where it adds less than 1/20,000 of its time.
    VANTA_REALTIME static void followSideBySide(std::span<const Lane> lanes, const CapacitorStyle& style);

private:
    /// The coefficient of the last time constant.
    struct Share {
        float samples;
        double value;
        VANTA_REALTIME double of(double timeSamples);
    };

    // One sample after the other.
    VANTA_REALTIME static void stepSideBySide(std::span<const Lane> lanes, const CapacitorStyle& style);
    void stepPlainly(const Block& block);
    template <std::size_t lanes, bool curved, bool smoothed>
    static void stepLanes(const Lane* lane);
    template <typename Shares>
    void followShares(const Block& block, int first, int end, Shares&& shares);

    template <unsigned modifiers>
    void follow(const Block& block, const CapacitorStyle& style);
    template <unsigned modifiers>
    double attackStep(double distance, int i, const Block& block, const CapacitorStyle& style);
    template <unsigned modifiers>
    double releaseStep(double distance, int i, const Block& block, const CapacitorStyle& style);
    double easeIn(double distance, double holdSamples);

    kernel::FollowerState state_;
    std::int64_t origin_ = 0;  ///< position in the stream of the last reset
    double holdRamp_ = 0.0;    ///< 0 to 1: how far the release has come to speed
    bool inRelease_ = false;
    Share attackShare_{-1.0f, 0.0};
    Share releaseShare_{-1.0f, 1.0};
    Share holdStep_{0.0f, 0.0};
    double slowedDistance_ = 0.0;  ///< dB, where the release smoothing was last looked up
    double slowing_ = 1.0;         ///< what was found there
};

}  // namespace vanta
