#include "interface/frame/quillmark_plugin_interface.hpp"

#include <utility>

#include <fmt/format.h>

#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"
#include "interface/frame/help_menu.hpp"
#include "interface/menus/open_externally.hpp"
#include "interface/menus/presets_menu.hpp"
#include "interface/midi/midi_menu.hpp"

namespace vanta::interface {

QuillmarkPluginInterface::QuillmarkPluginInterface(gui::UserInterface& interface, GenericPlugin& plugin,
                                                   InterfaceProduct describedProduct)
    : GenericPluginInterface(interface, plugin),
      product_(std::move(describedProduct)),
      styles_(interface),
      factory_(interface, &animator(), styles_),
      hintWindow_(&interface.make<HintWindow>()),
      hints_(*hintWindow_, plugin.statics().settings),
      midiLearn_(interface, plugin, bindings(), styles_, &animator()),
      sizing_(interface, plugin, gestures(), product_, hints_),
      presetsMenu_(interface, [this](MenuBuilder& menu) { fillPresetsMenu(menu, model(), presets()); }),
      helpMenu_(interface,
                [this](MenuBuilder& menu) {
                    fillHelpMenu(menu, hints_, product_.vendor,
                                 {.openHelp = [this] { postEvent(event::kOpenHelpFile); },
                                  .openWebSite = [this] { openLater(product_.webSite); },
                                  .openSupport = [this] { openLater(product_.support); },
                                  .showAbout = [this] { showAbout(); }});
                }),
      midiMenu_(interface, [this](MenuBuilder& menu) { fillMidiMenu(menu, model(), gestures()); }),
      sizesMenu_(interface, [this](MenuBuilder& menu) { sizing_.fillMenu(menu); }),
      presetsButton_(interface) {
    commands().toggleMidiLearn = [this] { midiLearn_.midiLearnMode = !midiLearn_.midiLearnMode; };
    commands().toggleFullScreen = [this] { sizing_.toggleFullScreen(); };
    commands().canFullScreen = [this] { return sizing_.isFullScreen() || sizing_.canFullScreen(); };
    midiLearn_.onModeChanged.addHandler(this, &QuillmarkPluginInterface::learnModeChanged);
    root().onResize.addHandler(this, &QuillmarkPluginInterface::windowResized);
}

QuillmarkPluginInterface::~QuillmarkPluginInterface() {
    root().onResize.removeHandler(this, &QuillmarkPluginInterface::windowResized);
    commands().toggleMidiLearn = nullptr;
    commands().toggleFullScreen = nullptr;
    commands().canFullScreen = nullptr;
    commands().onRefreshed = nullptr;
    close();
}

void QuillmarkPluginInterface::finish() {
    hintWindow_->toFront();
    commands().refresh();
    presetChanged();
    if (model().statics().settings.showWelcomeHint) postEvent(event::kWelcome);
}

void QuillmarkPluginInterface::interfaceEvent(int key, int value) {
    switch (key) {
        case event::kOpenAddress:
            open(address_);
            break;
        case event::kOpenHelpFile:
            if (!product_.help.empty()) open(product_.help);
            break;
        case event::kWelcome:
            hints_.welcome(welcomeText(product_));
            break;
        case event::kApplySize:
            sizing_.apply();
            break;
        case event::kStoreSize:
            sizing_.store(value >> 1, value & 1);
            break;
        default:
            GenericPluginInterface::interfaceEvent(key, value);
    }
}

bool QuillmarkPluginInterface::keyPressed(const gui::KeyPress& key) {
    if (key.key == gui::Key::Escape && midiLearn_.midiLearnMode) {
        midiLearn_.midiLearnMode = false;
    } else if (key.key == gui::Key::Escape && sizing_.isFullScreen()) {
        sizing_.toggleFullScreen();
    } else {
        return GenericPluginInterface::keyPressed(key);
    }
    return true;
}

void QuillmarkPluginInterface::openLater(const std::string& address) {
    address_ = address;
    postEvent(event::kOpenAddress);
}

void QuillmarkPluginInterface::open(const std::string& fileOrAddress) {
    if (openExternally(fileOrAddress)) return;
    notices().show("No program on this desktop opens " + fileOrAddress +
                   "\n\nPlease open it yourself, or install xdg-utils.");
}

void QuillmarkPluginInterface::showAbout() {
    if (!dialogStyle_) dialogStyle_ = &ui().make<GenericDialog::Style>();
    ui().make<GenericDialog>(*dialogStyle_, product_.vendor + " " + product_.name,
                             fmt::format("Version {}\n{}", product_.version, product_.webSite), "OK");
}

void QuillmarkPluginInterface::presetChanged() {
    HotspotButton* button = presetsButton_.get();
    if (!button) return;
    // Apart, so that a name that is cut short keeps the mark.
    button->setCaption(presetName());
    button->text(1).text = std::string(isPresetModified() ? " *" : "");
}

void QuillmarkPluginInterface::windowResized(void*) {
    sizing_.windowResized();
    // Compact has no full screen.
    commands().refresh();
}

void QuillmarkPluginInterface::learnModeChanged(void*) {
    if (gui::Button* button = commands().button(Command::MidiLearn))
        button->on = midiLearn_.midiLearnMode.value();
}

void QuillmarkPluginInterface::controlBound(gui::ValueControl& control, int index) {
    GenericPluginInterface::controlBound(control, index);
    midiLearn_.controlBound(control, index);
}

void QuillmarkPluginInterface::controlRightClicked(gui::ValueControl& control) {
    const gui::Rect at = control.windowBounds();
    midiMenu_.showLater({(at.left + at.right) / 2.0f, (at.top + at.bottom) / 2.0f});
}

}  // namespace vanta::interface
