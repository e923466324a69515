#include "interface/midi/midi_learn_controller.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "gui/controls/alignment.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"
#include "interface/controls/styles.hpp"

namespace vanta::interface {

MidiLearnController::MidiLearnController(gui::UserInterface& interface, gui::Animator* animatedBy,
                                         gui::Button::Style& closeStyle, gui::Button::Style& removeStyle,
                                         Owner asked)
    : Overlay(interface, animatedBy),
      owner_(std::move(asked)),
      promptText_(interface.createText()),
      labelText_(interface.createText()),
      close_(&interface.make<gui::Button>(animatedBy, &closeStyle)),
      remove_(&interface.make<gui::Button>(animatedBy, &removeStyle)) {
    // From the first moment of its fade on.
    hitThreshold = 0;
    refreshTree();
    promptText_->fontSize = 8.25f;
    promptText_->color = kValueColor;
    labelText_->fontSize = 7.5f;
    labelText_->color = kValueColor;
    close_->setCaption("Close");
    close_->accessibleName = std::string("Close MIDI Learn");
    close_->onClick.setHandler(this, &MidiLearnController::closeHit);
    close_->parent = this;
    remove_->accessibleName = std::string("Remove Controller");
    remove_->onClick.setHandler(this, &MidiLearnController::removeHit);
    remove_->visible = false;
    remove_->parent = this;
    setPrompts(true);
}

MidiLearnController::~MidiLearnController() {
    for (const Learned& learned : learned_) {
        if (!learned.control) continue;
        learned.control->onMouseEnter.removeHandler(this, &MidiLearnController::entered);
        learned.control->onMouseLeave.removeHandler(this, &MidiLearnController::left);
    }
    removeAllChildren();
}

void MidiLearnController::setPrompts(bool pointerInput) {
    hintPrompt = std::string("Click a control to activate it for MIDI Learn mode");
    hintPrefix =
        std::string(pointerInput ? "Move a MIDI control to associate it to: "
                                 : "Move a slider/knob on your MIDI controller to associate it to: ");
}

void MidiLearnController::addControl(gui::Control& control, int target) {
    addTarget(control, Behaviour::HitAnywhere);
    learned_.push_back({&control, target, target < 0 ? -1 : owner_.controllerOf(target)});
    control.onMouseEnter.addHandler(this, &MidiLearnController::entered);
    control.onMouseLeave.addHandler(this, &MidiLearnController::left);
    markDirty();
}

void MidiLearnController::addUsable(gui::Control& control) {
    addControl(control, -1);
}

void MidiLearnController::linkRemoved(Component* other) {
    const auto isGone = [&](const gui::Control* control) {
        return static_cast<const Component*>(control) == other;
    };
    for (std::size_t i = 0; i < learned_.size(); ++i) {
        if (!isGone(learned_[i].control)) continue;
        learned_[i].control = nullptr;
        if (static_cast<int>(i) == selected_ && !ui().isDestroying()) select(-1);
    }
    if (isGone(marked_)) marked_ = nullptr;
    Overlay::linkRemoved(other);
}

int MidiLearnController::positionOfTarget(int target) const {
    const auto found = std::find_if(learned_.begin(), learned_.end(), [&](const Learned& learned) {
        return learned.control && learned.target == target;
    });
    return target < 0 || found == learned_.end() ? -1 : static_cast<int>(found - learned_.begin());
}

int MidiLearnController::selectedTarget() const {
    return selected_ < 0 ? -1 : learned_[static_cast<std::size_t>(selected_)].target;
}

void MidiLearnController::select(int position) {
    if (position == selected_) return;
    selected_ = position;
    refresh();
}

void MidiLearnController::refresh() {
    for (Learned& learned : learned_) {
        learned.controller = learned.target < 0 ? -1 : owner_.controllerOf(learned.target);
    }
    assignedController_ = selected_ < 0 ? -1 : learned_[static_cast<std::size_t>(selected_)].controller;
    placeParts();
    markDirty();
}

void MidiLearnController::clearSelected() {
    if (const int target = selectedTarget(); target >= 0) owner_.clear(target);
    refresh();
}

std::string MidiLearnController::prompt() const {
    const int target = selectedTarget();
    return target < 0 ? hintPrompt.value() : hintPrefix.value() + owner_.nameOf(target);
}

/// The controls that show through are there to be used; all else is covered.
int MidiLearnController::alphaAt(gui::Point point) {
    for (const gui::Control* own : children()) {
        if (own->visible && own->placedBounds().contains(point)) return 255;
    }
    return targetAt(toWindow(point)) >= 0 ? 0 : 255;
}

void MidiLearnController::entered(void* sender) {
    marked_ = static_cast<gui::Control*>(sender);
    markDirty();
}

void MidiLearnController::left(void* sender) {
    if (marked_ != sender) return;
    marked_ = nullptr;
    markDirty();
}

void MidiLearnController::resized() {
    placeParts();
    Overlay::resized();
}

void MidiLearnController::propertyChanged(AbstractProperty& property) {
    Overlay::propertyChanged(property);
    if (&property == &hintPrompt || &property == &hintPrefix) refresh();
}

}  // namespace vanta::interface
