#include "dsp/envelope/capacitor.hpp"

#include <array>

#include "foundation/numbers.hpp"
#include "kernel/scan.hpp"

namespace vanta {
namespace {

/// A level within this distance of 0 dB is at rest.
constexpr float kAtRest = 1e-9f;

using Controls = AttackReleaseControls;

}  // namespace

Capacitor::Capacitor(wave::Environment& owner, const Style& style)
    : Filter(owner),
      attack(owner, 0.0005f, 0.0f, 10.0f),
      attackCurve(owner, 1.0f, 0.0f, 1.0f),
      attackSmoothing(owner, 0.0f, -1.0f, 1.0f),
      release(owner, 0.1f, 0.0f, 10.0f),
      releaseCurve(owner, 1.0f, 0.0f, 1.0f),
      releaseSmoothing(owner, 0.0f, -1.0f, 1.0f),
      hold(owner, 0.0f, 0.0f, 10.0f),
      style_(style) {
    makeResettable();
}

Capacitor::~Capacitor() {
    setPartner(nullptr);
}

void Capacitor::setPartner(Capacitor* other) {
    if (other == this) other = nullptr;
    if (other == partner_) return;
    if (partner_) partner_->partner_ = nullptr;
    partner_ = other;
    if (!other) return;
    if (other->partner_) other->partner_->partner_ = nullptr;
    other->partner_ = this;
}

void Capacitor::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>*, int samples, int) {
    // Whoever of a pair comes first deals with both: a reset that waited for its owner's next sound would cut
    // into the partner's.
    if (pendingReset_ || (partner_ && partner_->pendingReset_)) clearPair();
    // What drives the controls may have a memory of its own, which must not miss a block while this rests.
    const AttackReleaseFollower::Block block = blockFor(in, samples, pullControls(samples));
    if (idle(in, samples)) {
        publishInput();
        return;
    }
    if (block.controls.holds()) {
        follower_.followGenerally(block, style_);
    } else {
        followSideBySide(block);
    }
}

void Capacitor::clearPair() {
    for (Capacitor* capacitor : {this, partner_}) {
        if (!capacitor) continue;
        capacitor->follower_.reset(environment().position());
        capacitor->pendingReset_ = false;
    }
}

bool Capacitor::idle(const wave::BasicBlock<float>& in, int samples) const {
    return follower_.restsWithin(double{kAtRest}) &&
           kernel::highestMagnitude(in.data(), static_cast<std::size_t>(samples)) <= kAtRest;
}

AttackReleaseControls Capacitor::pullControls(int samples) {
    AttackReleaseControls c{};
    const auto pull = [&](wave::FloatParameterBus& bus, float neutral, unsigned modifier) {
        const float* values = bus.pullData(samples);
        if (!bus.isConstant() || !nearlyEqual(values[0], neutral)) c.modifiers |= modifier;
        return values;
    };
    c.attack = attack.pullData(samples);
    c.attackCurve = pull(attackCurve, 1.0f, Controls::kAttackCurve);
    c.attackSmoothing = pull(attackSmoothing, 0.0f, Controls::kAttackSmoothing);
    c.release = release.pullData(samples);
    c.releaseCurve = pull(releaseCurve, 1.0f, Controls::kReleaseCurve);
    c.releaseSmoothing = pull(releaseSmoothing, 0.0f, Controls::kReleaseSmoothing);
    c.hold = pull(hold, 0.0f, Controls::kHold);
    c.steadyAttack = attack.isConstant();
    c.steadyRelease = release.isConstant();
    c.steadyCurves = attackCurve.isConstant() && releaseCurve.isConstant();
    return c;
}

AttackReleaseFollower::Block Capacitor::blockFor(const wave::BasicBlock<float>& in, int samples,
                                                 const AttackReleaseControls& controls) const {
    return {in.data(), ownBlock()->data(), samples, environment().sampleRate(), environment().position(),
            controls};
}

/// Computes the partner in the same pass if it would do so too. One that has its block already, that rests or
/// that goes another way is left to itself, so it does not matter which of the two is pulled first.
void Capacitor::followSideBySide(const AttackReleaseFollower::Block& own) {
    std::array<AttackReleaseFollower::Lane, 2> lanes{{{&follower_, own}, {}}};
    if (!joinPartner(lanes[0], lanes[1])) {
        AttackReleaseFollower::followSideBySide(std::span(lanes).first(1), style_);
        return;
    }
    AttackReleaseFollower::followSideBySide(lanes, style_);
    partner_->publish(*partner_->ownBlock(), 0);
    partner_->markProduced();
}

bool Capacitor::joinPartner(const AttackReleaseFollower::Lane& own, AttackReleaseFollower::Lane& other) {
    if (!partner_ || !partner_->source || !partner_->active() || partner_->produced()) return false;
    const int samples = own.block.samples;
    const wave::BasicBlock<float>& in = partner_->source->pull(samples);
    other = {&partner_->follower_, partner_->blockFor(in, samples, partner_->pullControls(samples))};
    const Controls& otherControls = other.block.controls;
    return !otherControls.holds() && otherControls.law() == own.block.controls.law() &&
           partner_->follower_.origin() == follower_.origin() && !partner_->produced() &&
           !partner_->idle(in, samples);
}

}  // namespace vanta
