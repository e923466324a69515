#pragma once

#include "dsp/envelope/attack_release_follower.hpp"
#include "dsp/envelope/capacitor_style.hpp"
#include "wave/float_parameter_source.hpp"
#include "wave/producer.hpp"

namespace vanta {

/// A one-pole follower with an attack and a release of its own, which gives a gain change in dB its
/// ballistics. It covers 90 % of a step in the attack or release time. A curve of 0 makes that the time of a
/// 10 dB step and scales it with the step; smoothing slows small steps; a hold lets the release ease in. No
/// latency.
///
/// Two capacitors, of a left and a right channel, may be partners: the one that is pulled first then computes
/// both, side by side. Neither hears the other.
class Capacitor final : public wave::Filter {
public:
    using Style = CapacitorStyle;

    /// The style outlives the capacitor.
    Capacitor(wave::Environment& owner, const Style& style);
    ~Capacitor() override;

    /// Joins two capacitors of one environment, both ways, and parts each from the partner that it had. Null
    /// parts.
    void setPartner(Capacitor* other);
    Capacitor* partner() const { return partner_; }

    /// Takes effect at the next block, on the partner too.
    void reset() override { pendingReset_ = true; }

    wave::FloatParameterBus attack;            ///< s
    wave::FloatParameterBus attackCurve;       ///< 0 to 1
    wave::FloatParameterBus attackSmoothing;   ///< s, what a tiny step adds to the time; may be negative
    wave::FloatParameterBus release;           ///< s
    wave::FloatParameterBus releaseCurve;      ///< 0 to 1
    wave::FloatParameterBus releaseSmoothing;  ///< s
    wave::FloatParameterBus hold;              ///< s, for which the release of a 24 dB step eases in

protected:
    /// Idle: the input was handed on.
    bool settled() const override { return &current() != ownBlock(); }
    VANTA_REALTIME void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                                int flags) override;

private:
    VANTA_REALTIME void clearPair();
    VANTA_REALTIME bool idle(const wave::BasicBlock<float>& in, int samples) const;
    VANTA_REALTIME AttackReleaseControls pullControls(int samples);
    VANTA_REALTIME AttackReleaseFollower::Block blockFor(const wave::BasicBlock<float>& in, int samples,
                                                         const AttackReleaseControls& controls) const;
    VANTA_REALTIME void followSideBySide(const AttackReleaseFollower::Block& own);
    VANTA_REALTIME bool joinPartner(const AttackReleaseFollower::Lane& own,
                                    AttackReleaseFollower::Lane& other);

    const Style& style_;
    Capacitor* partner_ = nullptr;
    bool pendingReset_ = true;
    AttackReleaseFollower follower_;
};

}  // namespace vanta
