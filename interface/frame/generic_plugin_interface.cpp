#include "interface/frame/generic_plugin_interface.hpp"

#include <algorithm>

#include "foundation/channel_layout.hpp"
#include "gui/controls/knob.hpp"
#include "gui/controls/switch.hpp"
#include "gui/graphics/bitmap_error.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::interface {
namespace {

/// Whose value cannot be read on the control itself.
bool needsValueDisplay(const gui::ValueControl& control) {
    return dynamic_cast<const gui::Knob*>(&control) || dynamic_cast<const gui::Switch*>(&control);
}

}  // namespace

GenericPluginInterface::GenericPluginInterface(gui::UserInterface& interface, GenericPlugin& plugin)
    : ui_(interface),
      model_(plugin),
      animator_(interface),
      gestures_(plugin),
      bindings_(interface, plugin, gestures_),
      valueDisplay_(&interface.make<ParameterValueDisplay>(&animator_)),
      notices_(interface),
      presets_(interface, plugin, notices_),
      commands_(interface, plugin, gestures_, presets_) {
    bindings_.listener = this;
    valueDisplay_->listener = this;
    presets_.onLoaded = [this] { commands_.pushUndo(-1); };
    animator_.framesPerSecond = kFramesPerSecond;
    animator_.onFrame.setHandler(this, &GenericPluginInterface::frame);
    link_ = std::make_unique<ModelLink>(plugin, interface);
    model_.interfaceOpened();
    ui_.addListener(*this);
    ui_.keyHook = this;
    ui_.deviceBacking().addListener(*this);
    animator_.running = true;
}

GenericPluginInterface::~GenericPluginInterface() {
    close();
}

void GenericPluginInterface::close() {
    if (std::exchange(closed_, true)) return;
    // No frame from here on, on whatever thread it would come: what goes is nobody else's.
    root().shutdownRendering();
    animator_.running = false;
    ui_.removeListener(*this);
    ui_.deviceBacking().removeListener(*this);
    if (ui_.keyHook == this) ui_.keyHook = nullptr;
    {
        // The model waits for calls of other threads, which may be waiting for the root.
        const gui::RootControl::LockGivenAway givenAway(root());
        link_.reset();
    }
    bindings_.listener = nullptr;
    valueDisplay_->listener = nullptr;
    root().removeAllChildren();
    gestures_.setEditor(nullptr);
}

bool GenericPluginInterface::setBackground(const std::string& imageName) {
    try {
        ui_.loadBackdrop(imageName);
        return true;
    } catch (const gui::EBitmap&) {
        return false;
    }
}

void GenericPluginInterface::attachEditor(Editor* editor) {
    gestures_.setEditor(editor);
}

int GenericPluginInterface::parameterAt(gui::Point windowPoint) const {
    gui::Control* control = &root();
    while (gui::Control* child = control->childAt(windowPoint - control->toWindow(gui::Point{})))
        control = child;
    const auto* bound = dynamic_cast<const gui::ValueControl*>(control);
    return bound ? bindings_.indexOf(*bound) : -1;
}

void GenericPluginInterface::postEvent(int key, int value) {
    ui_.relay()->post(key, value);
    ui_.relay()->wake();
}

void GenericPluginInterface::pushUndo(int index) {
    if (ui_.isInterfaceThread()) {
        commands_.pushUndo(index);
    } else {
        postEvent(event::kPushUndo, index);
    }
}

void GenericPluginInterface::addChannelDelegate(std::unique_ptr<ChannelLayoutDelegate> delegate) {
    delegate->channelLayoutChanged(channelCount(model_.channelLayout));
    delegates_.push_back(std::move(delegate));
}

void GenericPluginInterface::tellDelegates() {
    for (const auto& delegate : delegates_)
        delegate->channelLayoutChanged(channelCount(model_.channelLayout));
    channelLayoutChanged();
}

std::string GenericPluginInterface::presetName() const {
    const std::string name = model_.presetState().values().name;
    return name.empty() ? "(No Preset)" : name;
}

bool GenericPluginInterface::isPresetModified() const {
    return model_.presetState().values().modified;
}

void GenericPluginInterface::interfaceEvent(int key, int value) {
    switch (key) {
        case event::kParameterChanged:
            showParameter(value);
            break;
        case event::kPresetChanged:
            presetChanged();
            break;
        case event::kControllerMoved:
            controllerMoved(value);
            break;
        case event::kControllerMapChanged:
            controllerMapChanged();
            break;
        case event::kLayoutChanged:
            tellDelegates();
            break;
        case event::kRefreshView:
            refreshPending_ = false;
            if (Editor* editor = gestures_.editor()) editor->refreshView();
            break;
        case event::kPushUndo:
            commands_.pushUndo(value);
            break;
        default:
            break;
    }
}

/// All of them are one call for whoever follows, as of a preset.
void GenericPluginInterface::showParameter(int index) {
    bindings_.show(index);
    valueDisplay_->refresh();
    if (index == event::kAllParameters) commands_.refresh();
    parameterChanged(index);
}

/// What moves along with the control stands below it.
void GenericPluginInterface::displayChanged() {
    const gui::ValueControl* shown = valueDisplay_->target();
    const int index = shown ? bindings_.indexOf(*shown) : -1;
    if (index < 0 || !bindings_.links().isLinked(index)) return;
    for (const int member : bindings_.links().chainOf(index)) {
        if (gui::ValueControl* linked = bindings_.control(member)) valueDisplay_->showWith(*linked);
    }
}

void GenericPluginInterface::controlBound(gui::ValueControl& control, int /*index*/) {
    if (needsValueDisplay(control)) valueDisplay_->attach(control);
    if (!gestures_.editor() || std::exchange(refreshPending_, true)) return;
    postEvent(event::kRefreshView);
}

bool GenericPluginInterface::keyPressed(const gui::KeyPress& key) {
    constexpr int kOthers = gui::modifier::kAlt | gui::modifier::kMeta;
    if (key.key != gui::Key::Character || !(key.modifiers & gui::modifier::kCtrl) ||
        (key.modifiers & kOthers)) {
        return false;
    }
    const char32_t letter = key.character | 0x20;
    const bool shifted = key.modifiers & gui::modifier::kShift;
    if (letter == U'z' && !shifted) {
        commands_.run(Command::Undo);
    } else if ((letter == U'z' && shifted) || (letter == U'y' && !shifted)) {
        commands_.run(Command::Redo);
    } else {
        return false;
    }
    return true;
}

/// Pictures that were put together belong to one scale.
void GenericPluginInterface::backingScaleChanged() {
    root().refreshTree();
}

}  // namespace vanta::interface
