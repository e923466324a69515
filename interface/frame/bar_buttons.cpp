#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"
#include "interface/controls/ab_button.hpp"
#include "interface/frame/quillmark_plugin_interface.hpp"
#include "interface/hints/hint_texts.hpp"

namespace vanta::interface {
namespace {

struct CommandRow {
    const char* name;  ///< of its hint
    const char* icon;
    const char* caption;
};

/// In the order of Command.
constexpr CommandRow kCommandTable[kCommands] = {
    {"Undo", "IconUndo.png", ""},
    {"Redo", "IconRedo.png", ""},
    {"A/B", "", ""},
    {"Copy", "", "Copy"},
    {"Previous Preset", "IconPrevious.png", ""},
    {"Next Preset", "IconNext.png", ""},
    {"MIDI Learn", "", "MIDI Learn"},
    {"Full Screen", "IconFullScreen.png", ""},
};

void describe(gui::Control& control, const char* name) {
    control.hint = hintText(name);
    control.accessibleName = std::string(name);
}

}  // namespace

gui::Button& QuillmarkPluginInterface::addCommandButton(Command command, const gui::Rect& at) {
    const CommandRow& row = kCommandTable[static_cast<std::size_t>(command)];
    gui::Button& button = command == Command::Compare ? factory_.addButton<ABButton>(at, ButtonStyle::Bar)
                                                      : factory_.addButton(at, ButtonStyle::Bar, row.caption);
    if (*row.icon) button.setIcon(row.icon);
    describe(button, row.name);
    commands().attach(command, button);
    if (command == Command::MidiLearn) {
        button.on = midiLearn_.midiLearnMode.value();
        midiLearn_.addUsable(button);
    }
    return button;
}

HotspotButton& QuillmarkPluginInterface::addMenuButton(const gui::Rect& at, ButtonStyle style,
                                                       const char* hintName, ActionMenu& menu) {
    auto& button = factory_.addButton<HotspotButton>(at, style);
    describe(button, hintName);
    button.openMenu = [&menu](int, gui::Point point) { menu.show(point); };
    return button;
}

HotspotButton& QuillmarkPluginInterface::addPresetsButton(const gui::Rect& at) {
    auto& button = addMenuButton(at, ButtonStyle::Hotspots, "Presets", presetsMenu_);
    button.setIcon("IconSelect.png");
    button.overlayAlignment = gui::Alignment::Right;
    button.lineCount = 2;
    button.text().lineStyle = gui::Text::LineStyle::Ellipsis;
    presetsButton_.set(&button);
    presetChanged();
    return button;
}

HotspotButton& QuillmarkPluginInterface::addHelpButton(const gui::Rect& at) {
    auto& button = addMenuButton(at, ButtonStyle::Bar, "Help", helpMenu_);
    button.setCaption("Help");
    return button;
}

HotspotButton& QuillmarkPluginInterface::addMidiMenuButton(const gui::Rect& at) {
    auto& button = addMenuButton(at, ButtonStyle::Bar, "MIDI Learn Menu", midiMenu_);
    button.setIcon("IconMenu.png");
    midiLearn_.addUsable(button);
    return button;
}

HotspotButton& QuillmarkPluginInterface::addSizesButton(const gui::Rect& at) {
    auto& button = addMenuButton(at, ButtonStyle::Bar, "Resize", sizesMenu_);
    button.setIcon("IconResize.png");
    return button;
}

}  // namespace vanta::interface
