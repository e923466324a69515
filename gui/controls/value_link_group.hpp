#pragma once

#include <memory>
#include <vector>

#include "gui/controls/value_control.hpp"

namespace vanta::gui {

/// Value controls that a linked gesture on one of them moves together.
class ValueLinkGroup {
public:
    /// Ties the two, `b` leaving whatever group it was in. A group with one member left is no more.
    static void link(ValueControl& a, ValueControl& b);
    static void leave(ValueControl& control);
    static ValueLinkGroup* of(const ValueControl& control) { return control.linkGroup_.get(); }

    /// The others move against the sender.
    bool inverted = false;
    const std::vector<ValueControl*>& members() const { return members_; }

private:
    friend class ValueControl;

    /// The sender's step for the others; `senderTarget` is the value that a change takes the sender to.
    void send(ValueControl& sender, GesturePhase phase, int source, int delta, int senderTarget);
    /// The part of `delta` that all others can follow.
    int limit(ValueControl& sender, int source, int delta);

    int memberDelta(const ValueControl& sender, const ValueControl& member, int delta,
                    int senderTarget) const;
    int limitByPosition(const ValueControl& sender, const ValueControl& member, int delta) const;
    static bool hasCurves(const ValueControl& a, const ValueControl& b);

    std::vector<ValueControl*> members_;
};

}  // namespace vanta::gui
