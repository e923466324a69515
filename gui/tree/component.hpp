#pragma once

#include <vector>

#include "foundation/property.hpp"

namespace vanta::gui {

class UserInterface;

/// What belongs to an interface: controls, timers, shared styles. The interface deletes, in the order of
/// their making, the components that are left when it goes; whoever made one may delete it before. A
/// component that makes others may own them, as it is older than they are.
class Component : public PropertyOwner {
public:
    explicit Component(UserInterface& interface);
    ~Component() override;
    Component(const Component&) = delete;
    Component& operator=(const Component&) = delete;

    void propertyChanged(AbstractProperty& /*property*/) override {}
    /// What `UserInterface::postDeferred` has asked for, once its caller is off the stack. May delete this.
    virtual void deferredCall(int /*argument*/) {}
    /// `other` is about to be gone; only its address is of use.
    virtual void linkRemoved(Component* /*other*/) {}

    /// Makes each hear of the other's end. Does nothing if they are linked.
    static void link(Component& a, Component& b);
    static void unlink(Component& a, Component& b);

    UserInterface& ui() const { return *ui_; }

private:
    std::vector<Component*> links_;
    UserInterface* ui_;
};

}  // namespace vanta::gui
