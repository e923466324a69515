#include "gui/controls/value_link_group.hpp"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace vanta::gui {

void ValueLinkGroup::link(ValueControl& a, ValueControl& b) {
    if (&a == &b || (a.linkGroup_ && a.linkGroup_ == b.linkGroup_)) return;
    leave(b);
    if (!a.linkGroup_) {
        a.linkGroup_ = std::make_shared<ValueLinkGroup>();
        a.linkGroup_->members_.push_back(&a);
    }
    b.linkGroup_ = a.linkGroup_;
    b.linkGroup_->members_.push_back(&b);
}

void ValueLinkGroup::leave(ValueControl& control) {
    const auto group = std::exchange(control.linkGroup_, nullptr);
    if (!group) return;
    if (std::exchange(control.buttonBits_, 0)) group->send(control, GesturePhase::End, 0, 0, 0);
    std::erase(group->members_, &control);
    if (group->members_.size() == 1) {
        group->members_.front()->linkGroup_ = nullptr;
        group->members_.clear();
    }
}

bool ValueLinkGroup::hasCurves(const ValueControl& a, const ValueControl& b) {
    return a.toNormal || a.fromNormal || b.toNormal || b.fromNormal;
}

void ValueLinkGroup::send(ValueControl& sender, GesturePhase phase, int source, int delta, int senderTarget) {
    const std::vector<ValueControl*> members = members_;
    for (ValueControl* member : members) {
        if (member == &sender) continue;
        const int moves =
            phase == GesturePhase::Change ? memberDelta(sender, *member, delta, senderTarget) : 0;
        const bool wasJumping = std::exchange(member->jumping_, sender.jumping_);
        member->applyChange(phase, source, moves, ValueControl::kFromGroup);
        member->jumping_ = wasJumping;
    }
}

int ValueLinkGroup::memberDelta(const ValueControl& sender, const ValueControl& member, int delta,
                                int senderTarget) const {
    const float reached = sender.normalizedAt(senderTarget);
    if (sender.jumping_) {
        return member.valueAt(inverted ? 1.0f - reached : reached) - member.virtualValue_;
    }
    if (!hasCurves(sender, member)) return inverted ? -delta : delta;
    const float travel = reached - sender.normalizedAt(sender.linkBase_);
    const float base = member.normalizedAt(member.linkBase_);
    return member.valueAt(inverted ? base - travel : base + travel) - member.virtualValue_;
}

int ValueLinkGroup::limit(ValueControl& sender, int source, int delta) {
    for (ValueControl* member : members_) {
        if (member == &sender || delta == 0) continue;
        if (hasCurves(sender, *member)) {
            delta = limitByPosition(sender, *member, delta);
        } else {
            const int reach = member->applyChange(GesturePhase::Change, source, inverted ? -delta : delta,
                                                  ValueControl::kDryRun | ValueControl::kFromGroup);
            delta = std::clamp(delta, -reach, reach);
        }
    }
    return delta;
}

/// Between controls of different curves it is the positions that end together.
int ValueLinkGroup::limitByPosition(const ValueControl& sender, const ValueControl& member, int delta) const {
    const float senderBase = sender.normalizedAt(sender.linkBase_);
    const float memberBase = member.normalizedAt(member.linkBase_);
    float down = memberBase - member.normalizedAt(member.minimum);
    float up = member.normalizedAt(member.maximum) - memberBase;
    if (inverted) std::swap(down, up);
    const int lowest = sender.valueAt(senderBase - down);
    const int highest = sender.valueAt(senderBase + up);
    const int target = std::clamp(sender.virtualValue_ + delta, std::min(lowest, sender.virtualValue_),
                                  std::max(highest, sender.virtualValue_));
    return target - sender.virtualValue_;
}

}  // namespace vanta::gui
