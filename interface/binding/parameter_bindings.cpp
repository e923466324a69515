#include "interface/binding/parameter_bindings.hpp"

#include <algorithm>
#include <cmath>

#include "gui/tree/user_interface.hpp"
#include "interface/binding/interface_events.hpp"
#include "plugin/parameters/abstract_plugin_parameter.hpp"

namespace vanta::interface {
namespace {

using Kind = AbstractPluginParameter::Kind;

std::size_t at(int index) {
    return static_cast<std::size_t>(index);
}

}  // namespace

ParameterBindings::ParameterBindings(gui::UserInterface& interface, GenericPlugin& plugin,
                                     ParameterGestures& usedGestures)
    : Component(interface),
      model_(plugin),
      gestures_(usedGestures),
      links_(plugin.parameterCount()),
      bound_(at(plugin.parameterCount())),
      moving_(bound_.size()) {
    for (int index = 0; index < count(); ++index) {
        texts_.push_back(std::make_unique<ParameterText>(parameter(index)));
    }
}

ParameterBindings::~ParameterBindings() {
    listener = nullptr;
    for (int index = 0; index < count(); ++index) release(index);
}

int ParameterBindings::indexOf(const gui::ValueControl& control) const {
    const auto found = std::find(bound_.begin(), bound_.end(), &control);
    return found == bound_.end() ? -1 : static_cast<int>(found - bound_.begin());
}

void ParameterBindings::bind(int index, gui::ValueControl* control) {
    if (index < 0 || index >= count()) return;
    if (bound_[at(index)] != control) {
        if (control && indexOf(*control) >= 0) release(indexOf(*control));
        release(index);
        if (!control) return;
        link(*this, *control);
        bound_[at(index)] = control;
        control->groupIndex = index;
        control->text = texts_[at(index)].get();
        control->onRightClick.addHandler(this, &ParameterBindings::rightClicked);
        const AbstractPluginParameter& meant = parameter(index);
        if (!meant.helpText.empty()) control->hint = meant.helpText;
        if (control->accessibleName.value().empty()) control->accessibleName = meant.displayName;
    }
    if (!control) return;
    setRange(index, *control);
    show(index);
    control->listener = this;
    if (listener) listener->controlBound(*control, index);
}

void ParameterBindings::release(int index) {
    gui::ValueControl* const control = std::exchange(bound_[at(index)], nullptr);
    if (!control) return;
    if (moving_[at(index)]) endChain(index);
    control->listener = nullptr;
    control->text = nullptr;
    control->groupIndex = -1;
    control->onRightClick.removeHandler(this, &ParameterBindings::rightClicked);
    unlink(*this, *control);
}

/// The host waits for the end of a gesture whose control has gone.
void ParameterBindings::linkRemoved(Component* other) {
    for (int index = 0; index < count(); ++index) {
        if (static_cast<Component*>(bound_[at(index)]) != other) continue;
        bound_[at(index)] = nullptr;
        if (moving_[at(index)]) endChain(index);
    }
}

void ParameterBindings::setRange(int index, gui::ValueControl& control) const {
    const AbstractPluginParameter& meant = parameter(index);
    if (meant.kind() == Kind::Indexed) {
        control.maximum = static_cast<int>(meant.maximum());
        control.minimum = static_cast<int>(meant.minimum());
    } else {
        control.maximum = kContinuousSteps;
        control.minimum = 0;
    }
    control.defaultValue = positionOf(meant, control, meant.defaultValue());
}

void ParameterBindings::show(int index) {
    if (index == event::kAllParameters) {
        for (int each = 0; each < count(); ++each) showOne(each);
    } else if (index >= 0 && index < count()) {
        showOne(index);
    }
}

void ParameterBindings::showOne(int index) {
    const AbstractPluginParameter& meant = parameter(index);
    if (gui::ValueControl* control = bound_[at(index)]) {
        control->value = positionOf(meant, *control, meant.value());
    }
}

/// A control at its end goes on moving those that have not reached theirs.
int ParameterBindings::requestChange(gui::ValueControl& control, int delta) {
    const int index = indexOf(control);
    if (index < 0 || !links_.isLinked(index)) return 0;
    int farthest = 0;
    for (const int member : links_.chainOf(index)) {
        const AbstractPluginParameter& linked = parameter(member);
        if (member == index || linked.kind() != Kind::Indexed) continue;
        const float target =
            std::clamp(linked.value() + static_cast<float>(delta), linked.minimum(), linked.maximum());
        farthest = std::max(farthest, static_cast<int>(std::lround(std::abs(target - linked.value()))));
    }
    return farthest;
}

void ParameterBindings::valueChanging(gui::ValueControl& control, gui::GesturePhase phase) {
    const int index = indexOf(control);
    if (index < 0) return;
    switch (phase) {
        case gui::GesturePhase::Begin:
            beginChain(index);
            break;
        case gui::GesturePhase::Change:
            if (!moving_[at(index)]) beginChain(index);  // bound while it was being moved
            moveChain(index, control);
            break;
        case gui::GesturePhase::End:
            endChain(index);
            // What came from elsewhere meanwhile was not shown.
            ui().relay()->post(event::kParameterChanged, index);
            ui().relay()->wake();
            break;
    }
}

void ParameterBindings::beginChain(int index) {
    moving_[at(index)] = true;
    for (const int member : links_.chainOf(index)) {
        links_.setBase(member, parameter(member).normalize(parameter(member).value()));
        gestures_.begin(member);
    }
}

void ParameterBindings::moveChain(int index, gui::ValueControl& control) {
    const AbstractPluginParameter& moved = parameter(index);
    const float value = valueAt(moved, control, control.value);
    gestures_.change(index, value);
    if (!links_.isLinked(index)) return;
    // Beyond the end of its own control the gesture goes on for the others.
    const float steps = static_cast<float>(control.steps());
    const float travel =
        static_cast<float>(control.virtualValue() - control.minimum) / steps - links_.base(index);
    for (const int member : links_.chainOf(index)) {
        if (member == index) continue;
        const float position = std::clamp(links_.base(member) + travel, 0.0f, 1.0f);
        gestures_.change(member, parameter(member).denormalize(position));
    }
}

void ParameterBindings::endChain(int index) {
    moving_[at(index)] = false;
    for (const int member : links_.chainOf(index)) gestures_.end(member);
}

void ParameterBindings::rightClicked(void* sender) {
    if (listener) listener->controlRightClicked(*static_cast<gui::ValueControl*>(sender));
}

}  // namespace vanta::interface
