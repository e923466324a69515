#pragma once

#include <array>
#include <functional>

#include "gui/controls/button.hpp"
#include "interface/binding/parameter_bindings.hpp"
#include "interface/menus/preset_commands.hpp"

namespace vanta::interface {

enum class Command { Undo, Redo, Compare, Copy, PreviousPreset, NextPreset, MidiLearn, FullScreen };
inline constexpr int kCommands = 8;

/// What the buttons of the bars do: one handler finds out which of them was clicked. On the interface's
/// thread.
class Commands final : public gui::Component, public ParameterGestures::Listener {
public:
    Commands(gui::UserInterface& interface, GenericPlugin& plugin, ParameterGestures& usedGestures,
             PresetCommands& usedPresets);
    ~Commands() override;

    /// For what is not the model's.
    std::function<void()> toggleMidiLearn;
    std::function<void()> toggleFullScreen;
    std::function<bool()> canFullScreen;
    /// After anything that may have changed what the buttons show.
    std::function<void()> onRefreshed;

    /// The button does the command from now on, in place of the one that did so before.
    void attach(Command command, gui::Button& button);
    gui::Button* button(Command command) const { return buttons_[static_cast<std::size_t>(command)]; }
    void run(Command command);
    bool canRun(Command command) const;
    /// A step of undo; with the index of the parameter that was set, if it was one.
    void pushUndo(int index);
    /// Which of them can be used.
    void refresh();

    void parameterReleased(int) override { refresh(); }
    void linkRemoved(Component* other) override;

private:
    void clicked(void* sender);
    void detach(gui::Button*& button);

    GenericPlugin& model_;
    ParameterGestures& gestures_;
    PresetCommands& presets_;
    std::array<gui::Button*, kCommands> buttons_{};
};

}  // namespace vanta::interface
