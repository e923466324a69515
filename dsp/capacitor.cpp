#include "dsp/capacitor.hpp"

#include <array>
#include <cmath>

#include "dsp/kernel/mix.hpp"
#include "foundation/numbers.hpp"

namespace vanta {
namespace {

/// A level within this distance of 0 dB is at rest.
constexpr float kAtRest = 1e-9f;

using Controls = BallisticsControls;

/// Whether the two may be computed in one pass.
bool linkable(const Controls& a, const Controls& b) {
    return ((a.modifiers | b.modifiers) & Controls::kHold) == 0 && a.steadyCurves && b.steadyCurves &&
           nearlyEqual(a.attackCurve[0], b.attackCurve[0]) &&
           nearlyEqual(a.releaseCurve[0], b.releaseCurve[0]);
}

}  // namespace

Capacitor::Capacitor(wave::Environment& owner, const Style& sharedStyle)
    : Filter(owner),
      attack(owner, 0.0005f, 0.0f, 10.0f),
      attackCurve(owner, 1.0f, 0.0f, 1.0f),
      attackSmoothing(owner, 0.0f, -1.0f, 1.0f),
      release(owner, 0.1f, 0.0f, 10.0f),
      releaseCurve(owner, 1.0f, 0.0f, 1.0f),
      releaseSmoothing(owner, 0.0f, -1.0f, 1.0f),
      hold(owner, 0.0f, 0.0f, 10.0f),
      style_(sharedStyle) {
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

void Capacitor::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples, int) {
    // Whoever of a pair comes first deals with both: a reset that waited for its owner's next sound would cut
    // into the partner's.
    if (pendingReset_ || (partner_ && partner_->pendingReset_)) clearPair();
    if (idle(in, samples)) {
        publishInput();
        return;
    }
    Ballistics::Block block = blockFor(in, samples, pullControls(samples));
    block.out = out->data();
    if (block.controls.modifiers == 0) {
        ballistics_.followPlainly(block);
    } else if (!followLinked(block)) {
        ballistics_.followGenerally(block, style_);
    }
}

void Capacitor::clearPair() {
    for (Capacitor* capacitor : {this, partner_}) {
        if (!capacitor) continue;
        capacitor->ballistics_.clear();
        capacitor->pendingReset_ = false;
    }
}

bool Capacitor::idle(const wave::BasicBlock<float>& in, int samples) const {
    return std::abs(ballistics_.level()) <= double{kAtRest} &&
           kernel::peak(in.data(), static_cast<std::size_t>(samples)) <= kAtRest;
}

BallisticsControls Capacitor::pullControls(int samples) {
    BallisticsControls c{};
    const auto pull = [&](FloatParameterBus& bus, float neutral, unsigned modifier) {
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

Ballistics::Block Capacitor::blockFor(const wave::BasicBlock<float>& in, int samples,
                                      const BallisticsControls& controls) const {
    return {in.data(), ownBlock()->data(), samples, environment().sampleRate(), environment().position(),
            controls};
}

/// Everything here is decided from both sides alike, so that it does not matter which of the two is pulled
/// first: a partner that has its block already, that rests, or that needs no modifier is left to itself.
bool Capacitor::followLinked(const Ballistics::Block& own) {
    if (!partner_ || !partner_->source || !partner_->active()) return false;
    const Controls partnerControls = partner_->pullControls(own.samples);
    if (!linkable(own.controls, partnerControls)) return false;
    const wave::BasicBlock<float>& partnerIn = partner_->source->pull(own.samples);
    const bool alone =
        partner_->produced() || partnerControls.modifiers == 0 || partner_->idle(partnerIn, own.samples);
    const std::array<Ballistics::Lane, 2> lanes{
        {{&ballistics_, own},
         {&partner_->ballistics_, partner_->blockFor(partnerIn, own.samples, partnerControls)}}};
    Ballistics::followSideBySide(std::span(lanes).first(alone ? 1 : 2));
    if (!alone) {
        partner_->publish(*partner_->ownBlock(), 0);
        partner_->markProduced();
    }
    return true;
}

}  // namespace vanta
