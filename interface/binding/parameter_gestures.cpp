#include "interface/binding/parameter_gestures.hpp"

#include "plugin/parameters/abstract_plugin_parameter.hpp"

namespace vanta::interface {

ParameterGestures::ParameterGestures(GenericPlugin& plugin)
    : model_(plugin), held_(static_cast<std::size_t>(plugin.parameterCount())) {}

ParameterGestures::~ParameterGestures() {
    listeners_.clear();
    for (int index = 0; index < static_cast<int>(held_.size()); ++index) {
        while (isHeld(index)) end(index);
    }
}

template <typename Tell>
void ParameterGestures::tellAll(Tell tell) {
    for (std::size_t i = 0; i < listeners_.size(); ++i) tell(*listeners_[i]);
}

void ParameterGestures::begin(int index) {
    if (held_[static_cast<std::size_t>(index)]++ == 0) {
        model_.gesture(index, GenericPlugin::Gesture::Begin);
        if (editor_) editor_->beginGesture(index);
    }
    tellAll([&](Listener& listener) { listener.parameterTouched(index); });
}

void ParameterGestures::change(int index, float value) {
    model_.parameterAt(index)->setValue(value, 0);
    model_.gesture(index, GenericPlugin::Gesture::Change);
    if (editor_) editor_->gestureMoved(index, model_.parameterAt(index)->value());
    tellAll([&](Listener& listener) { listener.parameterMoved(index); });
}

void ParameterGestures::end(int index) {
    if (!isHeld(index)) return;
    if (--held_[static_cast<std::size_t>(index)] == 0) {
        if (editor_) editor_->endGesture(index);
        model_.gesture(index, GenericPlugin::Gesture::End);
    }
    tellAll([&](Listener& listener) { listener.parameterReleased(index); });
}

void ParameterGestures::set(int index, float value) {
    begin(index);
    change(index, value);
    end(index);
}

}  // namespace vanta::interface
