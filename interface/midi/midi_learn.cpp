#include "interface/midi/midi_learn.hpp"

#include "gui/tree/user_interface.hpp"
#include "plugin/parameters/abstract_plugin_parameter.hpp"

namespace vanta::interface {
namespace {

constexpr int kRemoveRestAlpha = 128;

gui::Button::Style& makeRemoveStyle(gui::UserInterface& ui) {
    auto& style = Styles::makePictureStyle(ui, "IconRemove.png", "IconRemove.png");
    style.overlayRestAlpha = kRemoveRestAlpha;
    return style;
}

}  // namespace

MidiLearn::MidiLearn(gui::UserInterface& interface, GenericPlugin& plugin, ParameterBindings& usedBindings,
                     const Styles& usedStyles, gui::Animator* animatedBy)
    : Component(interface),
      model_(plugin),
      bindings_(usedBindings),
      styles_(usedStyles),
      animator_(animatedBy),
      removeStyle_(makeRemoveStyle(interface)),
      learner_(plugin.statics().controllers) {
    bindings_.gestures().addListener(*this);
}

MidiLearn::~MidiLearn() {
    bindings_.gestures().removeListener(*this);
    if (overlay_ && !ui().isDestroying()) delete overlay_;
}

void MidiLearn::propertyChanged(AbstractProperty& property) {
    if (&property != &midiLearnMode) return;
    learner_.setTarget(MidiControlled::kNoTarget);
    if (midiLearnMode) {
        showOverlay();
    } else {
        hideOverlay();
    }
    onModeChanged.raise(this);
}

void MidiLearn::showOverlay() {
    hideOverlay();
    overlay_ = &ui().make<MidiLearnController>(
        animator_, styles_.button(ButtonStyle::Bar), removeStyle_,
        MidiLearnController::Owner{
            .controllerOf = [this](int target) { return controllerOf(target); },
            .nameOf = [this](int target) { return bindings_.parameter(target).displayName; },
            .close = [this] { midiLearnMode = false; },
            .clear =
                [this](int target) {
                    const auto held = model_.statics().lock();
                    model_.statics().controllers.assign(-1, target);
                }});
    link(*this, *overlay_);
    for (int index = 0; index < bindings_.count(); ++index) {
        if (gui::ValueControl* control = bindings_.control(index)) overlay_->addControl(*control, index);
    }
    for (gui::Control* usable : usable_) overlay_->addUsable(*usable);
    overlay_->show();
}

/// It fades away on its own.
void MidiLearn::hideOverlay() {
    MidiLearnController* const overlay = std::exchange(overlay_, nullptr);
    if (!overlay) return;
    unlink(*this, *overlay);
    overlay->enabled = false;
    overlay->hide();
}

void MidiLearn::addUsable(gui::Control& control) {
    link(*this, control);
    usable_.push_back(&control);
    if (overlay_) overlay_->addUsable(control);
}

void MidiLearn::linkRemoved(Component* other) {
    std::erase_if(usable_, [&](gui::Control* control) { return static_cast<Component*>(control) == other; });
    if (other == static_cast<Component*>(overlay_)) overlay_ = nullptr;
}

void MidiLearn::controlBound(gui::ValueControl& control, int index) {
    if (overlay_ && overlay_->positionOfTarget(index) < 0) overlay_->addControl(control, index);
}

int MidiLearn::controllerOf(int target) const {
    const auto held = model_.statics().lock();
    return model_.statics().controllers.controllerOf(target);
}

void MidiLearn::touched(int index) {
    if (midiLearnMode) setTarget(index);
}

void MidiLearn::setTarget(int parameter) {
    learner_.setTarget(parameter);
    if (overlay_) overlay_->select(overlay_->positionOfTarget(parameter));
}

void MidiLearn::controllerMoved(int controller) {
    if (midiLearnMode) {
        const auto held = model_.statics().lock();
        learner_.controllerMoved(controller);
    }
    if (overlay_) overlay_->refresh();
}

void MidiLearn::mapChanged() {
    model_.saveMidiMap();
    if (overlay_) overlay_->refresh();
}

}  // namespace vanta::interface
