#include "gui/tree/component.hpp"

#include <algorithm>

#include "gui/tree/user_interface.hpp"

namespace vanta::gui {

Component::Component(UserInterface& interface) : ui_(&interface) {
    ui_->components_.push_back(this);
}

Component::~Component() {
    while (!links_.empty()) {
        Component* other = links_.back();
        links_.pop_back();
        std::erase(other->links_, this);
        other->linkRemoved(this);
    }
    ui_->forget(*this);
}

void Component::link(Component& a, Component& b) {
    if (std::find(a.links_.begin(), a.links_.end(), &b) != a.links_.end()) return;
    a.links_.push_back(&b);
    b.links_.push_back(&a);
}

void Component::unlink(Component& a, Component& b) {
    std::erase(a.links_, &b);
    std::erase(b.links_, &a);
}

}  // namespace vanta::gui
