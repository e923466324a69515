#pragma once

#include "gui/tree/component.hpp"

namespace vanta::interface {

/// A control that somebody else may delete: then there is none.
template <typename Kind>
class ControlLink final : public gui::Component {
public:
    using Component::Component;

    void set(Kind* control) {
        if (control_) unlink(*this, *control_);
        control_ = control;
        if (control_) link(*this, *control_);
    }
    Kind* get() const { return control_; }
    void linkRemoved(Component* other) override {
        if (other == static_cast<Component*>(control_)) control_ = nullptr;
    }

private:
    Kind* control_ = nullptr;
};

}  // namespace vanta::interface
