#pragma once

#include <memory>
#include <vector>

#include "interface/binding/parameter_bindings.hpp"
#include "interface/controls/styles.hpp"
#include "interface/midi/midi_learn_controller.hpp"
#include "plugin/midi/controller_mapping.hpp"

namespace vanta::interface {

/// Learning MIDI controllers: while it is on, the parameter that was touched last gets the next controller
/// that moves. The map belongs to all instances of the process. On the interface's thread.
class MidiLearn final : public gui::Component, public ParameterGestures::Listener {
public:
    MidiLearn(gui::UserInterface& interface, GenericPlugin& plugin, ParameterBindings& usedBindings,
              const Styles& usedStyles, gui::Animator* animatedBy);
    ~MidiLearn() override;

    Property<bool> midiLearnMode{this, false};
    NotifyEvent onModeChanged;
    /// The parameter that learns, or -1.
    int learnTarget() const { return learner_.target(); }
    void setTarget(int parameter);
    /// One that can be used while the sheet is up, such as the button that switches it.
    void addUsable(gui::Control& control);
    MidiLearnController* overlay() const { return overlay_; }

    void controllerMoved(int controller);
    /// Keeps the map, and shows it.
    void mapChanged();
    /// A control stands for a parameter, perhaps while the sheet is up.
    void controlBound(gui::ValueControl& control, int index);

    void parameterTouched(int index) override { touched(index); }
    void parameterMoved(int index) override { touched(index); }
    void propertyChanged(AbstractProperty& property) override;
    void linkRemoved(Component* other) override;

private:
    void touched(int index);
    void showOverlay();
    void hideOverlay();
    int controllerOf(int target) const;

    GenericPlugin& model_;
    ParameterBindings& bindings_;
    const Styles& styles_;
    gui::Animator* animator_;
    gui::Button::Style& removeStyle_;
    ControllerLearner learner_;
    std::vector<gui::Control*> usable_;
    MidiLearnController* overlay_ = nullptr;
};

}  // namespace vanta::interface
