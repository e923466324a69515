// A follower is a chain: each level waits for the one before it, through a division and two exponentials.
// Here the levels of a group of samples are unknowns of one system, solved at once by Newton's method: from a
// guess at all levels follow step and slope of each sample, in all lanes; the linearised chain is a recursion
// of the first order, which a scan solves (affine_scan.hpp); the solution is the next guess. Round k leaves
// at least the first k samples exact, as each depends on earlier ones only, so it ends; near the solution the
// error is squared each round. Where that takes too long the chain is stepped through after all. On music one
// round does for most groups, as the guess that the level goes on as it went in the group before is near.
//
// Lim et al., Parallelizing Non-linear Sequential Models over the Sequence Length, ICLR 2024; Gonzalez et
// al., Towards Scalable and Stable Parallelization of Nonlinear RNNs, NeurIPS 2024.

#include "kernel/follower_solver.hpp"

#include <algorithm>
#include <span>

#include "kernel/follower.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernel/follower_solver.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {

bool follow(FollowerLaw, const FollowerTrack*, std::size_t, float, std::int64_t, std::size_t) {
    return false;
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#else

#include "kernel/affine_scan.hpp"
#include "kernel/vector_math.hpp"

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

static_assert(kGroupSamples <= std::tuple_size_v<decltype(FollowerState::course)>);

/// What a round may leave wrong, in dB of the level: a unit in its last place between 8 and 16 dB.
constexpr float kSettled = 0x1p-20f;

HWY_INLINE GroupPart all(float value) {
    return hn::Set(GroupTag(), value);
}

/// In every second lane.
HWY_INLINE GroupPart both(float even, float odd) {
    return hn::OddEven(all(odd), all(even));
}

using GroupRow = std::array<float, kGroupSamples>;

/// How the level moves at each sample.
struct Motion {
    GroupPart share;  ///< of the distance, covered in this sample
    GroupPart pass;   ///< change of the level after the sample by that before it
    GroupPart bend;   ///< by how much the share falls for each dB of distance
    GroupPart time;   ///< s, never negative
    GroupPart reach;  ///< s per dB: four times what the time changes, or `time` itself
};

/// The controls of half a group.
template <FollowerLaw law>
struct Controls {
    static constexpr bool kCurved = law == FollowerLaw::Curved || law == FollowerLaw::CurvedAndSmoothed;
    static constexpr bool kSmoothed = law == FollowerLaw::Smoothed || law == FollowerLaw::CurvedAndSmoothed;
    static constexpr bool kPlain = !kCurved && !kSmoothed;
    static constexpr float kAttackAbove = kPlain ? 0.0f : -0x1p-23f;

    GroupPart decay;  ///< ln(10) samples, in s
    GroupPart
        shortest;  ///< s: from here on the share is 1. It also catches what smoothing has made negative.
    GroupPart attack, release;  ///< s; of the plain laws, the shares
    GroupPart attackCurve, releaseCurve;
    GroupPart attackSmoothing, releaseSmoothing;

    Controls() = default;
    explicit Controls(float sampleRate)
        : decay(all(static_cast<float>(kFollowerDecay) / sampleRate)),
          shortest(all(0.0261658f / sampleRate)) {}

    HWY_INLINE GroupPart share(GroupPart seconds) const {
        return vectorExpComplement(GroupTag(), hn::Div(decay, hn::Max(seconds, shortest)));
    }

    HWY_INLINE void load(const FollowerTrack& track, std::size_t at) {
        const GroupTag d;
        attack = hn::LoadU(d, track.attack + at);
        release = hn::LoadU(d, track.release + at);
        if constexpr (kPlain) {
            attack = share(attack);
            release = share(release);
        }
        if constexpr (kCurved) {
            attackCurve = hn::LoadU(d, track.attackCurve + at);
            releaseCurve = hn::LoadU(d, track.releaseCurve + at);
        }
        if constexpr (kSmoothed) {
            attackSmoothing = hn::LoadU(d, track.attackSmoothing + at);
            releaseSmoothing = hn::LoadU(d, track.releaseSmoothing + at);
        }
    }

    /// Of one sample of each track, in the first lanes.
    HWY_INLINE void loadSamples(const FollowerTrack& one, const FollowerTrack& other, std::size_t at) {
        attack = both(one.attack[at], other.attack[at]);
        release = both(one.release[at], other.release[at]);
        if constexpr (kCurved) {
            attackCurve = both(one.attackCurve[at], other.attackCurve[at]);
            releaseCurve = both(one.releaseCurve[at], other.releaseCurve[at]);
        }
        if constexpr (kSmoothed) {
            attackSmoothing = both(one.attackSmoothing[at], other.attackSmoothing[at]);
            releaseSmoothing = both(one.releaseSmoothing[at], other.releaseSmoothing[at]);
        }
    }

    /// With the distance x, the time t and y = ln(10) / (t sampleRate): share = 1 - exp(-y), so
    ///     bend = -d share / d|x| = exp(-y) y/t dt/d|x|,
    ///     pass = d (level + share x) / d level = 1 - share + |x| bend.
    HWY_INLINE Motion at(GroupPart distance) const {
        const auto attacking = hn::Gt(distance, all(kAttackAbove));
        const auto one = all(1.0f);
        auto time = hn::IfThenElse(attacking, attack, release);
        if constexpr (kPlain) {
            const auto none = hn::Zero(GroupTag());
            return {time, hn::Sub(one, time), none, none, none};
        } else {
            const auto size = hn::Abs(distance);
            auto timeByDistance = hn::Zero(GroupTag());
            if constexpr (kCurved) {
                const auto curve = hn::IfThenElse(attacking, attackCurve, releaseCurve);
                const auto tenth = hn::Mul(time, all(0.1f));
                const auto proportional = hn::Mul(tenth, size);
                time = hn::MulAdd(hn::Sub(time, proportional), curve, proportional);
                timeByDistance = hn::NegMulAdd(tenth, curve, tenth);
            }
            if constexpr (kSmoothed) {
                const auto smoothing = hn::IfThenElse(attacking, attackSmoothing, releaseSmoothing);
                const auto slowing = hn::Mul(vectorExp(GroupTag(), hn::Neg(size)), smoothing);
                time = hn::Add(time, slowing);
                timeByDistance = hn::Sub(timeByDistance, slowing);
            }
            const auto perSecond = hn::Div(one, hn::Max(time, shortest));
            const auto y = hn::Mul(decay, perSecond);
            const auto covered = vectorExpComplement(GroupTag(), y);
            const auto rest = hn::Sub(one, covered);
            const auto bend = hn::Mul(hn::Mul(rest, y), hn::Mul(perSecond, timeByDistance));
            const auto length = hn::Abs(time);
            const auto reach = hn::Mul(hn::Max(length, hn::Abs(timeByDistance)), all(4.0f));
            return {covered, hn::MulAdd(size, bend, rest), bend, length, reach};
        }
    }
};

/// Whether a sample's motion must be found anew after the level before it has `moved` from the guess: where
/// it is on the other side of attack and release, where its time has changed by a quarter, and where the
/// step's second order counts. That is (2 + |x|) / 2 bend moved^2 at most, and a level keeps 1/share times
/// what every sample adds.
template <FollowerLaw law>
HWY_INLINE auto unsettled(const Motion& motion, GroupPart distance, GroupPart moved) {
    const auto now = hn::Sub(distance, moved);
    const auto edge = all(Controls<law>::kAttackAbove);
    const auto crossed = hn::Xor(hn::Gt(distance, edge), hn::Gt(now, edge));
    if constexpr (Controls<law>::kPlain) {
        // The recursion is its own linearisation, but a slope next to 1 is rounded by 2^-25, in each of 32
        // samples; another round leaves only what that makes of the correction.
        return hn::Or(crossed, hn::Gt(hn::Abs(moved), all(1.0f)));
    } else {
        const auto size = hn::Abs(moved);
        const auto far = hn::Gt(hn::Mul(size, motion.reach), motion.time);
        const auto curvature = hn::Mul(hn::Abs(motion.bend), hn::Add(all(2.0f), hn::Abs(distance)));
        const auto error = hn::Mul(curvature, hn::Mul(moved, moved));
        return hn::Or(hn::Or(crossed, far), hn::Gt(error, hn::Mul(all(2.0f * kSettled), motion.share)));
    }
}

HWY_INLINE auto groupLanesFrom(std::size_t first, std::size_t part) {
    return lanesFrom(static_cast<int>(first) - static_cast<int>(part) * kPartLanes);
}

/// Where attack and release alternate from sample to sample, each round settles hardly more than one. From
/// the third round on it has to settle as many as would be stepped through in its time.
constexpr std::size_t kRoundsInAnyCase = 3;
constexpr std::size_t kSamplesOfRound = 4;

/// A group that is stepped through from `begin` on.
struct Steps {
    const FollowerTrack* track;
    std::size_t at;  ///< of the group's first sample
    double base;     ///< the level before it
    std::size_t begin = kGroupSamples;
    float* course;
    GroupRow targets;
};

/// The chain itself, one sample after the other, of one group or of two at once, which takes no longer. What
/// a sample depends on lies before it, so it does not matter that later ones of the group may not be there
/// yet.
template <FollowerLaw law>
HWY_NOINLINE void stepThrough(Controls<law> controls, const Steps& one, const Steps& other) {
    const auto levelBefore = [](const Steps& steps, std::size_t place) {
        return place > 0 ? steps.course[place - 1] : 0.0f;
    };
    std::size_t i = std::min(one.begin, other.begin);
    auto level = both(levelBefore(one, i), levelBefore(other, i));
    for (; i < kGroupSamples; ++i) {
        controls.loadSamples(*one.track, *other.track, one.at + i);
        const auto target = both(one.targets[i], other.targets[i]);
        const auto distance = hn::Sub(target, level);
        const auto share = controls.at(distance).share;
        level = hn::IfThenElse(hn::Eq(share, all(1.0f)), target, hn::MulAdd(share, distance, level));
        // Up to where its steps begin a course has been found.
        if (i >= one.begin) {
            one.course[i] = hn::GetLane(level);
        } else {
            level = both(one.course[i], hn::ExtractLane(level, 1));
        }
        if (i >= other.begin) {
            other.course[i] = hn::ExtractLane(level, 1);
        } else {
            level = both(hn::GetLane(level), other.course[i]);
        }
    }
}

/// Writes a group and its course, and returns the level after the first `count` samples.
HWY_INLINE double conclude(const float* samples, double base, const Group& target, const Group& course,
                           float* guess, float* out, std::size_t count) {
    const GroupTag d;
    const auto high = static_cast<float>(base);
    const auto low = static_cast<float>(base - static_cast<double>(high));
    alignas(64) GroupRow targets;
    for (std::size_t part = 0; part < 2; ++part) {
        const auto in = hn::LoadU(d, samples + part * kPartLanes);
        const auto level = hn::Add(all(high), hn::Add(all(low), course[part]));
        const auto arrived = hn::Eq(course[part], target[part]);
        hn::StoreU(hn::IfThenElse(arrived, in, level), d, out + part * kPartLanes);
        hn::StoreU(course[part], d, guess + part * kPartLanes);
        hn::StoreU(target[part], d, targets.data() + part * kPartLanes);
    }
    // What has arrived is there, whatever the difference was rounded to.
    const std::size_t last = count - 1;
    const double level = guess[last] == targets[last] ? static_cast<double>(samples[last])
                                                      : base + static_cast<double>(guess[last]);
    return (level + 1e-16) - 1e-16;
}

/// The same after its steps.
HWY_NOINLINE double conclude(const Steps& steps, float* out, std::size_t count) {
    const GroupTag d;
    Group target, course;
    for (std::size_t part = 0; part < 2; ++part) {
        target[part] = hn::LoadU(d, steps.targets.data() + part * kPartLanes);
        course[part] = hn::LoadU(d, steps.course + part * kPartLanes);
    }
    return conclude(steps.track->in + steps.at, steps.base, target, course, steps.course, out, count);
}

/// Follows the samples from `first` on through a group, and returns the level after the first `count`, or
/// leaves what is to be stepped through in `steps`. `guess` becomes what was found. No sample depends on
/// later ones, down to its last digit: its value stays as it is from the round on in which it and all before
/// it have settled.
///
/// Levels are differences from the level before the group, so that single precision does: its rounding is in
/// proportion to what the level moves, and the level itself stays a double.
template <FollowerLaw law>
HWY_INLINE double followGroup(const FollowerTrack& track, std::size_t at,
                              const std::array<Controls<law>, 2>& controls, double base, float* guess,
                              float* out, Steps& steps, std::size_t first = 0,
                              std::size_t count = kGroupSamples) {
    const GroupTag d;
    const auto high = static_cast<float>(base);
    const auto low = static_cast<float>(base - static_cast<double>(high));
    Group target, course;
    for (std::size_t part = 0; part < 2; ++part) {
        const auto in = hn::LoadU(d, track.in + at + part * kPartLanes);
        target[part] = hn::Sub(hn::Sub(in, all(high)), all(low));
        course[part] =
            hn::IfThenElseZero(groupLanesFrom(first, part), hn::LoadU(d, guess + part * kPartLanes));
    }
    Group before = samplesBefore(course);
    std::size_t settled = first;
    for (std::size_t round = 0; round <= kGroupSamples; ++round) {
        const Group distance{hn::Sub(target[0], before[0]), hn::Sub(target[1], before[1])};
        // Made in place: copies of such aggregates go through memory in halves, which the next load waits
        // for.
        const std::array<Motion, 2> motion{controls[0].at(distance[0]), controls[1].at(distance[1])};
        Group pass, residual;
        for (std::size_t part = 0; part < 2; ++part) {
            pass[part] = motion[part].pass;
            const auto apart =
                hn::MulAdd(motion[part].share, distance[part], hn::Sub(before[part], course[part]));
            residual[part] = hn::IfThenElseZero(groupLanesFrom(settled, part), apart);
        }
        const Group change = solveRecursion(pass, residual);
        for (std::size_t part = 0; part < 2; ++part) {
            // A share of 1 arrives exactly: whether the next sample is an attack may hang on the last digit.
            const auto arrives =
                hn::And(hn::Eq(motion[part].share, all(1.0f)), groupLanesFrom(settled, part));
            course[part] = hn::IfThenElse(arrives, target[part], hn::Add(course[part], change[part]));
        }
        const Group found = samplesBefore(course);
        Group moved;
        for (std::size_t part = 0; part < 2; ++part) {
            moved[part] = hn::Sub(found[part], before[part]);
            before[part] = found[part];
        }
        const auto open = unsettled<law>(motion[0], distance[0], moved[0]);
        const auto openLater = unsettled<law>(motion[1], distance[1], moved[1]);
        if (hn::AllFalse(d, hn::Or(open, openLater))) break;
        const auto place = hn::FindFirstTrue(d, open);
        settled = static_cast<std::size_t>(place >= 0 ? place : kPartLanes + hn::FindFirstTrue(d, openLater));
        if constexpr (!Controls<law>::kPlain) {
            const std::size_t rounds = round + 1;
            if (rounds < kRoundsInAnyCase || settled >= first + rounds * kSamplesOfRound) continue;
            steps = {&track, at, base, settled, guess, {}};
            for (std::size_t part = 0; part < 2; ++part) {
                hn::StoreU(course[part], d, guess + part * kPartLanes);
                hn::StoreU(target[part], d, steps.targets.data() + part * kPartLanes);
            }
            return base;
        }
    }
    return conclude(track.in + at, base, target, course, guess, out, count);
}

template <FollowerLaw law>
HWY_INLINE std::array<Controls<law>, 2> controlsAt(const Controls<law>& fresh, const FollowerTrack& track,
                                                   std::size_t at) {
    std::array<Controls<law>, 2> controls{fresh, fresh};
    for (std::size_t part = 0; part < 2; ++part) controls[part].load(track, at + part * kPartLanes);
    return controls;
}

/// Follows a piece of a group, `count` samples from `place` on. The whole group so far is solved anew each
/// time, from the level and the guess before it, which gives what one piece would have given.
template <FollowerLaw law>
void followPiece(const Controls<law>& fresh, const FollowerTrack& track, std::size_t at,
                 std::int64_t position, std::size_t place, std::size_t count) {
    FollowerState& state = *track.state;
    FollowerState::Begun& begun = state.begun;
    if (begun.next != position || begun.law != law) begun = {state.level, position, law, place, {}};
    FollowerTrack group = track;
    std::size_t row = 0;
    for (const float* FollowerTrack::*signal :
         {&FollowerTrack::in, &FollowerTrack::attack, &FollowerTrack::attackCurve,
          &FollowerTrack::attackSmoothing, &FollowerTrack::release, &FollowerTrack::releaseCurve,
          &FollowerTrack::releaseSmoothing}) {
        auto& values = begun.rows[row++];
        if (track.*signal == nullptr) continue;
        // Beyond its end the piece goes on as it ends.
        const float* from = track.*signal + at;
        std::fill(std::copy(from, from + count, values.begin() + static_cast<std::ptrdiff_t>(place)),
                  values.end(), from[count - 1]);
        group.*signal = values.data();
    }
    auto course = state.course;
    alignas(64) GroupRow out;
    Steps steps;
    state.level = followGroup(group, 0, controlsAt(fresh, group, 0), begun.level, course.data(), out.data(),
                              steps, begun.first, place + count);
    if (steps.begin < kGroupSamples) {
        stepThrough<law>(fresh, steps, steps);
        state.level = conclude(steps, out.data(), place + count);
    }
    std::copy_n(out.begin() + static_cast<std::ptrdiff_t>(place), count, track.out + at);
    begun.next = position + static_cast<std::int64_t>(count);
    if (place + count == kGroupSamples) {
        state.course = course;
        begun.next = -1;
    }
}

/// Of those tracks that have steps to go.
template <FollowerLaw law>
HWY_NOINLINE void stepTracks(const Controls<law>& fresh, std::span<const Steps> tracks) {
    const auto waits = [](const Steps& steps) { return steps.begin < kGroupSamples; };
    const Steps& one = *std::ranges::find_if(tracks, waits);
    stepThrough<law>(fresh, one, waits(tracks.back()) ? tracks.back() : one);
    for (const Steps& steps : tracks) {
        if (waits(steps))
            steps.track->state->level = conclude(steps, steps.track->out + steps.at, kGroupSamples);
    }
}

template <FollowerLaw law>
void followBy(const FollowerTrack* tracks, std::size_t trackCount, float sampleRate, std::int64_t position,
              std::size_t count) {
    // Pieces are kept with their times, which may move from block to block.
    constexpr auto kPieces = law == FollowerLaw::Steady ? FollowerLaw::Plain : law;
    const auto piece = [&](std::size_t at, std::size_t length) {
        const std::int64_t start = position + static_cast<std::int64_t>(at);
        const auto place = static_cast<std::size_t>(start) % kGroupSamples;
        for (std::size_t t = 0; t < trackCount; ++t) {
            followPiece<kPieces>(Controls<kPieces>(sampleRate), tracks[t], at, start, place, length);
        }
    };
    const std::size_t place = static_cast<std::size_t>(position) % kGroupSamples;
    std::size_t at = 0;
    if (place != 0) piece(0, at = std::min(count, kGroupSamples - place));

    const Controls<law> fresh(sampleRate);
    // What stands still is looked up once.
    std::array<std::array<Controls<law>, 2>, kMostTracks> still{};
    if constexpr (law == FollowerLaw::Steady) {
        for (std::size_t t = 0; t < trackCount; ++t) still[t] = controlsAt(fresh, tracks[t], 0);
    }
    // One group of each track in turn: their chains overlap in the processor.
    for (; at + kGroupSamples <= count; at += kGroupSamples) {
        std::array<Steps, kMostTracks> steps;
        bool anySteps = false;
        for (std::size_t t = 0; t < trackCount; ++t) {
            FollowerState& state = *tracks[t].state;
            float* out = tracks[t].out + at;
            steps[t].begin = kGroupSamples;
            if constexpr (law == FollowerLaw::Steady) {
                state.level =
                    followGroup(tracks[t], at, still[t], state.level, state.course.data(), out, steps[t]);
            } else {
                state.level = followGroup(tracks[t], at, controlsAt(fresh, tracks[t], at), state.level,
                                          state.course.data(), out, steps[t]);
            }
            anySteps = anySteps || steps[t].begin < kGroupSamples;
        }
        if (anySteps) stepTracks(fresh, std::span(steps).first(trackCount));
    }
    if (at < count) piece(at, count - at);
}

bool follow(FollowerLaw law, const FollowerTrack* tracks, std::size_t trackCount, float sampleRate,
            std::int64_t position, std::size_t count) {
    using Form = void (*)(const FollowerTrack*, std::size_t, float, std::int64_t, std::size_t);
    static constexpr Form kForms[] = {followBy<FollowerLaw::Steady>, followBy<FollowerLaw::Plain>,
                                      followBy<FollowerLaw::Curved>, followBy<FollowerLaw::Smoothed>,
                                      followBy<FollowerLaw::CurvedAndSmoothed>};
    kForms[static_cast<std::size_t>(law)](tracks, trackCount, sampleRate, position, count);
    return true;
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#endif

#if HWY_ONCE
namespace vanta::kernel {

VANTA_KERNEL(follow);

}  // namespace vanta::kernel
#endif
