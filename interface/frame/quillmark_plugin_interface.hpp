#pragma once

#include <optional>
#include <string>

#include "interface/controls/control_factory.hpp"
#include "interface/controls/control_link.hpp"
#include "interface/controls/hotspot_button.hpp"
#include "interface/frame/generic_dialog.hpp"
#include "interface/frame/generic_plugin_interface.hpp"
#include "interface/frame/interface_product.hpp"
#include "interface/frame/interface_sizing.hpp"
#include "interface/hints/help_hints.hpp"
#include "interface/menus/action_menu.hpp"
#include "interface/midi/midi_learn.hpp"

namespace vanta::interface {

/// What all our plug-ins look alike in: styles, hints, MIDI learn, menus, sizes, and the buttons of the bars.
/// A product derives from it and places its controls.
class QuillmarkPluginInterface : public GenericPluginInterface {
public:
    QuillmarkPluginInterface(gui::UserInterface& interface, GenericPlugin& plugin,
                             InterfaceProduct describedProduct);
    ~QuillmarkPluginInterface() override;

    const InterfaceProduct& product() const { return product_; }
    const Styles& styles() const { return styles_; }
    ControlFactory& factory() { return factory_; }
    HelpHints& hints() { return hints_; }
    HintWindow& hintWindow() const { return *hintWindow_; }
    MidiLearn& midiLearn() { return midiLearn_; }
    InterfaceSizing& sizing() { return sizing_; }
    ActionMenu& presetsMenu() { return presetsMenu_; }
    ActionMenu& helpMenu() { return helpMenu_; }
    ActionMenu& midiMenu() { return midiMenu_; }
    ActionMenu& sizesMenu() { return sizesMenu_; }

    // The buttons of the bars, each with its icon or caption, its hint and its work.

    gui::Button& addCommandButton(Command command, const gui::Rect& at);
    HotspotButton& addPresetsButton(const gui::Rect& at);
    HotspotButton& addHelpButton(const gui::Rect& at);
    HotspotButton& addMidiMenuButton(const gui::Rect& at);
    HotspotButton& addSizesButton(const gui::Rect& at);

    /// As HelpHints::show.
    void showInHintWindow(const std::string& text, int flags) { hints_.show(text, flags); }
    /// The name of the plug-in, its version and where more of it is, in a dialog.
    void showAbout();
    /// Once all controls are there: the hint window comes on top, and a new user is welcomed.
    void finish();

    void interfaceEvent(int key, int value) override;
    void hintChanged(const std::string& text) override { hints_.hintChanged(text); }
    bool keyPressed(const gui::KeyPress& key) override;

protected:
    void presetChanged() override;
    void controllerMoved(int controller) override { midiLearn_.controllerMoved(controller); }
    void controllerMapChanged() override { midiLearn_.mapChanged(); }
    void controlBound(gui::ValueControl& control, int index) override;
    void controlRightClicked(gui::ValueControl& control) override;

private:
    HotspotButton& addMenuButton(const gui::Rect& at, ButtonStyle style, const char* hintName,
                                 ActionMenu& menu);
    void openLater(const std::string& address);
    void open(const std::string& fileOrAddress);
    void windowResized(void*);
    void learnModeChanged(void*);

    const InterfaceProduct product_;
    Styles styles_;
    ControlFactory factory_;
    HintWindow* hintWindow_;  ///< the tree's
    HelpHints hints_;
    MidiLearn midiLearn_;
    InterfaceSizing sizing_;
    ActionMenu presetsMenu_;
    ActionMenu helpMenu_;
    ActionMenu midiMenu_;
    ActionMenu sizesMenu_;
    ControlLink<HotspotButton> presetsButton_;
    GenericDialog::Style* dialogStyle_ = nullptr;  ///< made on first use
    std::string address_;                          ///< to be opened by kOpenAddress
};

}  // namespace vanta::interface
