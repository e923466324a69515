#pragma once

#include <functional>
#include <utility>

#include "gui/tree/component.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::interface {

/// Does something when whoever asks is off the stack, as a host does that closes a window. A loop of a menu
/// or a dialog gets to it as well. The interface deletes it.
class Later final : public gui::Component {
public:
    Later(gui::UserInterface& interface, std::function<void()> done)
        : Component(interface), action_(std::move(done)) {
        ui().postDeferred(*this, 0);
    }
    void deferredCall(int) override {
        // Which may be the end of this.
        const auto action = action_;
        action();
    }

private:
    std::function<void()> action_;
};

}  // namespace vanta::interface
