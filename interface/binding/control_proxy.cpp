#include "interface/binding/control_proxy.hpp"

#include "gui/tree/user_interface.hpp"

namespace vanta::interface {

ControlProxy::ControlProxy(gui::ValueControl& duplicate, gui::ValueControl& original)
    : Component(duplicate.ui()), duplicate_(&duplicate), original_(&original) {
    link(*this, duplicate);
    link(*this, original);
    duplicate.listener = this;
    duplicate.text = original.text;
    duplicate.hint = original.hint.value();
    duplicate.accessibleName = original.accessibleName.value();
    original.onValueChanged.addHandler(this, &ControlProxy::follow);
    follow(nullptr);
}

ControlProxy::~ControlProxy() {
    if (original_) original_->onValueChanged.removeHandler(this, &ControlProxy::follow);
    if (duplicate_) duplicate_->listener = nullptr;
}

void ControlProxy::linkRemoved(Component* other) {
    if (other == static_cast<Component*>(original_)) {
        original_ = nullptr;
        if (duplicate_) duplicate_->text = nullptr;
    }
    if (other != static_cast<Component*>(duplicate_)) return;
    duplicate_ = nullptr;
    // A gesture that the duplicate has begun ends with it.
    if (original_ && !ui().isDestroying()) original_->beginEndChange(gui::GesturePhase::End, 0);
}

void ControlProxy::follow(void*) {
    if (!duplicate_ || !original_) return;
    duplicate_->maximum = original_->maximum.value();
    duplicate_->minimum = original_->minimum.value();
    duplicate_->defaultValue = original_->defaultValue.value();
    if (duplicate_->toNormal == original_->toNormal) {
        duplicate_->value = original_->value.value();
    } else {
        duplicate_->setNormalized(original_->normalized());
    }
}

void ControlProxy::valueChanging(gui::ValueControl& control, gui::GesturePhase phase) {
    if (!original_) return;
    const int target = original_->toNormal == control.toNormal ? control.value.value()
                                                               : original_->valueAt(control.normalized());
    const bool moves = phase == gui::GesturePhase::Change;
    original_->beginEndChange(phase, moves ? target - original_->virtualValue() : 0);
}

}  // namespace vanta::interface
