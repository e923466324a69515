#include "dsp/envelope/attack_release_follower.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "foundation/fast_exponential.hpp"
#include "foundation/numbers.hpp"
#include "kernel/follower.hpp"

namespace vanta {
namespace {

using Controls = AttackReleaseControls;
using kernel::kFollowerDecay;

/// Steps beyond this are not slowed, in dB.
constexpr double kSlowedBelow = 10.0;

double clearDenormal(double level) {
    return (level + 1e-16) - 1e-16;
}

/// A time that a curve of 0 measures for a step of 10 dB, in proportion to the step.
double bend(double seconds, double distance, float curve) {
    const double proportional = seconds * distance * 0.1;
    return proportional + (seconds - proportional) * curve;
}

bool equalCurves(const Controls& a, const Controls& b) {
    return nearlyEqual(a.attackCurve[0], b.attackCurve[0]) &&
           nearlyEqual(a.releaseCurve[0], b.releaseCurve[0]);
}

}  // namespace

kernel::FollowerLaw AttackReleaseControls::law() const {
    using Law = kernel::FollowerLaw;
    const bool curved = (modifiers & (kAttackCurve | kReleaseCurve)) != 0;
    const bool smoothed = (modifiers & (kAttackSmoothing | kReleaseSmoothing)) != 0;
    if (curved) return smoothed ? Law::CurvedAndSmoothed : Law::Curved;
    if (smoothed) return Law::Smoothed;
    return steadyAttack && steadyRelease ? Law::Steady : Law::Plain;
}

bool AttackReleaseFollower::restsWithin(double distance) const {
    const bool begunThere = state_.begun.next < 0 || std::abs(state_.begun.level) <= distance;
    return begunThere && std::abs(state_.level) <= distance;
}

inline double AttackReleaseFollower::Share::of(double timeSamples) {
    const auto key = static_cast<float>(timeSamples);
    if (key != samples) {
        samples = key;
        value = key <= kEqualWithin ? 1.0 : kFastExponential.complement(-kFollowerDecay / double{key});
    }
    return value;
}

// ---- Side by side ----

void AttackReleaseFollower::followSideBySide(std::span<const Lane> lanes, const CapacitorStyle& style) {
    std::array<kernel::FollowerTrack, kernel::kMostTracks> tracks;
    for (std::size_t l = 0; l < lanes.size(); ++l) {
        const Block& block = lanes[l].block;
        const Controls& c = block.controls;
        lanes[l].follower->inRelease_ = false;
        tracks[l] = {&lanes[l].follower->state_, block.in,  block.out,      c.attack,          c.attackCurve,
                     c.attackSmoothing,          c.release, c.releaseCurve, c.releaseSmoothing};
    }
    const Block& first = lanes[0].block;
    if (kernel::follow(first.controls.law(), tracks.data(), lanes.size(), first.sampleRate,
                       first.position - lanes[0].follower->origin_,
                       static_cast<std::size_t>(first.samples))) {
        return;
    }
    stepSideBySide(lanes, style);
}

// ---- General ----

template <unsigned modifiers>
inline double AttackReleaseFollower::attackStep(double distance, int i, const Block& block,
                                                const CapacitorStyle& style) {
    const Controls& controls = block.controls;
    inRelease_ = false;
    double seconds = controls.attack[i];
    if constexpr (modifiers & Controls::kAttackCurve) {
        seconds = bend(seconds, distance, controls.attackCurve[i]);
    }
    if constexpr (modifiers & Controls::kAttackSmoothing) {
        if (distance < kSlowedBelow) {
            seconds +=
                style.expTable(std::max(-distance, -CapacitorStyle::kSpan)) * controls.attackSmoothing[i];
        }
    }
    return attackShare_.of(seconds * block.sampleRate) * distance;
}

template <unsigned modifiers>
inline double AttackReleaseFollower::releaseStep(double distance, int i, const Block& block,
                                                 const CapacitorStyle& style) {
    const Controls& controls = block.controls;
    if (!inRelease_) {
        inRelease_ = true;
        holdRamp_ = 0.0;
    }
    double seconds = controls.release[i];
    if constexpr (modifiers & Controls::kReleaseCurve) {
        seconds = bend(seconds, -distance, controls.releaseCurve[i]);
    }
    if constexpr (modifiers & Controls::kHold) {
        distance = easeIn(distance, double{controls.hold[i]} * block.sampleRate);
    }
    if constexpr (modifiers & Controls::kReleaseSmoothing) {
        if (distance > -kSlowedBelow) {
            // The stream's position decides when to look anew, so that block sizes do not matter.
            const double square = distance * distance;
            if ((block.position + i) % 16 == 0 ||
                std::abs(distance - slowedDistance_) > 1e-5 * square * square + 4e-5) {
                slowedDistance_ = distance;
                slowing_ = style.expTable(std::max(distance, -CapacitorStyle::kSpan));
            }
            seconds += slowing_ * controls.releaseSmoothing[i];
        }
    }
    return releaseShare_.of(seconds * block.sampleRate) * distance;
}

inline double AttackReleaseFollower::easeIn(double distance, double holdSamples) {
    const auto rampSamples = static_cast<float>(std::max(std::abs(distance) / 24.0 * holdSamples, 1.0));
    if (!nearlyEqual(rampSamples, holdStep_.samples)) holdStep_ = {rampSamples, 1.0 / double{rampSamples}};
    holdRamp_ = std::min(holdRamp_ + holdStep_.value, 1.0);
    return distance * holdRamp_ * holdRamp_;
}

template <unsigned modifiers>
void AttackReleaseFollower::follow(const Block& block, const CapacitorStyle& style) {
    // A local copy can live in registers: the output may alias the members, but not this.
    AttackReleaseFollower state = *this;
    for (int i = 0; i < block.samples; ++i) {
        const double distance = block.in[i] - state.state_.level;
        const double step = distance > double{-kEqualWithin}
                                ? state.attackStep<modifiers>(distance, i, block, style)
                                : state.releaseStep<modifiers>(distance, i, block, style);
        state.state_.level = clearDenormal(state.state_.level + step);
        block.out[i] = static_cast<float>(state.state_.level);
    }
    *this = state;
}

void AttackReleaseFollower::followGenerally(const Block& block, const CapacitorStyle& style) {
    using Form = void (AttackReleaseFollower::*)(const Block&, const CapacitorStyle&);
    static constexpr auto kForms = []<unsigned... sets>(std::integer_sequence<unsigned, sets...>) {
        return std::array<Form, sizeof...(sets)>{&AttackReleaseFollower::follow<sets>...};
    }
    (std::make_integer_sequence<unsigned, Controls::kModifierSets>());
    state_.begun.next = -1;
    (this->*kForms[block.controls.modifiers])(block, style);
}

// ---- One sample after the other ----

template <typename Shares>
inline void AttackReleaseFollower::followShares(const Block& block, int first, int end, Shares&& shares) {
    double level = state_.level;
    for (int i = first; i < end; ++i) {
        const double distance = block.in[i] - level;
        const auto [attack, release] = shares(i - first);
        level += (distance > 0.0 ? attack : release) * distance;
        if (i % 4 == 3) level = clearDenormal(level);
        block.out[i] = static_cast<float>(level);
    }
    state_.level = clearDenormal(level);
}

void AttackReleaseFollower::stepPlainly(const Block& block) {
    const Controls& controls = block.controls;
    if (controls.steadyAttack && controls.steadyRelease) {
        const double attack = attackShare_.of(double{controls.attack[0]} * block.sampleRate);
        const double release = releaseShare_.of(double{controls.release[0]} * block.sampleRate);
        followShares(block, 0, block.samples, [=](int) { return std::pair(attack, release); });
        return;
    }
    constexpr int kPiece = 64;
    alignas(64) std::array<float, kPiece> attack;
    alignas(64) std::array<float, kPiece> release;
    for (int first = 0; first < block.samples; first += kPiece) {
        const int end = std::min(first + kPiece, block.samples);
        const auto count = static_cast<std::size_t>(end - first);
        kernel::followerCoefficients(controls.attack + first, block.sampleRate, attack.data(), count);
        kernel::followerCoefficients(controls.release + first, block.sampleRate, release.data(), count);
        followShares(block, first, end, [&](int i) {
            const auto index = static_cast<std::size_t>(i);
            return std::pair(double{attack[index]}, double{release[index]});
        });
    }
}

template <std::size_t lanes, bool curved, bool smoothed>
void AttackReleaseFollower::stepLanes(const Lane* lane) {
    const Block& first = lane[0].block;
    const float attackCurve = first.controls.attackCurve[0];
    const float releaseCurve = first.controls.releaseCurve[0];
    // From here on exp(-ln(10)/n) is nothing; it also catches times that smoothing has made negative.
    constexpr double kShortest = 0.0261658;
    std::array<double, lanes> level;
    for (std::size_t l = 0; l < lanes; ++l) level[l] = lane[l].follower->state_.level;
    for (int i = 0; i < first.samples; ++i) {
        for (std::size_t l = 0; l < lanes; ++l) {
            const Controls& controls = lane[l].block.controls;
            const double distance = lane[l].block.in[i] - level[l];
            const bool attacking = distance > double{-kEqualWithin};
            double seconds = attacking ? controls.attack[i] : controls.release[i];
            if constexpr (curved) {
                seconds = bend(seconds, std::abs(distance), attacking ? attackCurve : releaseCurve);
            }
            if constexpr (smoothed) {
                seconds += kFastExponential.ofNegative(-std::abs(distance)) *
                           (attacking ? controls.attackSmoothing[i] : controls.releaseSmoothing[i]);
            }
            const double samples = std::max(seconds * first.sampleRate, kShortest);
            level[l] += kFastExponential.complement(-kFollowerDecay / samples) * distance;
            if (i % 4 == 3) level[l] = clearDenormal(level[l]);
            lane[l].block.out[i] = static_cast<float>(level[l]);
        }
    }
    for (std::size_t l = 0; l < lanes; ++l) {
        lane[l].follower->state_.level = clearDenormal(level[l]);
    }
}

void AttackReleaseFollower::stepSideBySide(std::span<const Lane> lanes, const CapacitorStyle& style) {
    const Controls& controls = lanes[0].block.controls;
    const auto suits = [&](const Lane& lane) {
        const Controls& own = lane.block.controls;
        return own.modifiers != 0 && own.steadyCurves && equalCurves(own, controls);
    };
    if (!std::ranges::all_of(lanes, suits)) {
        if (lanes.size() > 1) {
            for (std::size_t l = 0; l < lanes.size(); ++l) stepSideBySide(lanes.subspan(l, 1), style);
        } else if (controls.modifiers == 0) {
            lanes[0].follower->stepPlainly(lanes[0].block);
        } else {
            lanes[0].follower->followGenerally(lanes[0].block, style);
        }
        return;
    }
    using Form = void (*)(const Lane*);
    static constexpr Form kForms[2][3] = {
        {stepLanes<1, true, false>, stepLanes<1, false, true>, stepLanes<1, true, true>},
        {stepLanes<2, true, false>, stepLanes<2, false, true>, stepLanes<2, true, true>}};
    const auto form =
        static_cast<std::size_t>(controls.law()) - static_cast<std::size_t>(kernel::FollowerLaw::Curved);
    kForms[lanes.size() - 1][form](lanes.data());
}

}  // namespace vanta
