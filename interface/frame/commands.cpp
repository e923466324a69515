#include "interface/frame/commands.hpp"

#include <algorithm>

#include "interface/controls/ab_button.hpp"
#include "interface/controls/styles.hpp"

namespace vanta::interface {

Commands::Commands(gui::UserInterface& interface, GenericPlugin& plugin, ParameterGestures& usedGestures,
                   PresetCommands& usedPresets)
    : Component(interface), model_(plugin), gestures_(usedGestures), presets_(usedPresets) {
    gestures_.addListener(*this);
}

Commands::~Commands() {
    gestures_.removeListener(*this);
    for (gui::Button*& button : buttons_) detach(button);
}

void Commands::detach(gui::Button*& button) {
    if (!button) return;
    button->onClick.removeHandler(this, &Commands::clicked);
    unlink(*this, *button);
    button = nullptr;
}

void Commands::attach(Command command, gui::Button& button) {
    gui::Button*& place = buttons_[static_cast<std::size_t>(command)];
    detach(place);
    link(*this, button);
    place = &button;
    button.onClick.addHandler(this, &Commands::clicked);
    refresh();
}

void Commands::linkRemoved(Component* other) {
    for (gui::Button*& button : buttons_) {
        if (static_cast<Component*>(button) == other) button = nullptr;
    }
}

void Commands::clicked(void* sender) {
    const auto found = std::find(buttons_.begin(), buttons_.end(), static_cast<gui::Button*>(sender));
    if (found != buttons_.end()) run(static_cast<Command>(found - buttons_.begin()));
}

bool Commands::canRun(Command command) const {
    if (command == Command::Undo) return model_.undoHistory().canUndo();
    if (command == Command::Redo) return model_.undoHistory().canRedo();
    if (command == Command::FullScreen) return !canFullScreen || canFullScreen();
    return true;
}

void Commands::run(Command command) {
    const auto call = [](const std::function<void()>& action) {
        if (action) action();
    };
    switch (command) {
        case Command::Undo:
            model_.undoHistory().undo();
            break;
        case Command::Redo:
            model_.undoHistory().redo();
            break;
        case Command::Compare:
            model_.toggleCompare();
            break;
        case Command::Copy:
            model_.compareStates().initialize();
            model_.compareStates().copyToOther();
            break;
        case Command::PreviousPreset:
            presets_.step(PresetManager::Direction::Previous);
            break;
        case Command::NextPreset:
            presets_.step(PresetManager::Direction::Next);
            break;
        case Command::MidiLearn:
            call(toggleMidiLearn);
            break;
        case Command::FullScreen:
            call(toggleFullScreen);
            break;
    }
    refresh();
}

void Commands::pushUndo(int index) {
    model_.takeSnapshot(index);
    refresh();
}

void Commands::refresh() {
    for (const Command command : {Command::Undo, Command::Redo, Command::FullScreen}) {
        if (gui::Button* button = this->button(command)) {
            button->enabled = canRun(command);
            button->alpha = button->enabled ? 255 : kDisabledAlpha;
        }
    }
    if (auto* compare = dynamic_cast<ABButton*>(button(Command::Compare))) {
        compare->showSlot(model_.compareStates().current());
    }
    if (onRefreshed) onRefreshed();
}

}  // namespace vanta::interface
