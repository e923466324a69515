#pragma once

#include <memory>
#include <vector>

#include "gui/animation/animator.hpp"
#include "gui/tree/user_interface.hpp"
#include "interface/binding/interface_events.hpp"
#include "interface/binding/model_link.hpp"
#include "interface/binding/parameter_bindings.hpp"
#include "interface/controls/parameter_value_display.hpp"
#include "interface/frame/channel_delegates.hpp"
#include "interface/frame/commands.hpp"
#include "interface/menus/notices.hpp"
#include "interface/menus/preset_commands.hpp"

namespace vanta::interface {

/// The interface of any plug-in of ours, as far as it does not depend on its looks: controls bound to
/// parameters, events between the model and the controls, undo, presets. It fills an empty UserInterface,
/// which has to outlive it, and makes the model its own while it lives.
///
/// All on the interface's thread. What another thread asks for goes through `postEvent`.
class GenericPluginInterface : public gui::UserInterface::Listener,
                               public gui::UserInterface::KeyHook,
                               public gui::DeviceBacking::BackingScaleListener,
                               protected ParameterBindings::Listener,
                               protected ParameterValueDisplay::Listener {
public:
    /// Of the animator, where no render thread gives the frames.
    static constexpr int kFramesPerSecond = 15;

    GenericPluginInterface(gui::UserInterface& interface, GenericPlugin& plugin);
    /// Deletes all controls. Not within a call that the model makes. Events on their way are lost.
    ~GenericPluginInterface() override;
    GenericPluginInterface(const GenericPluginInterface&) = delete;
    GenericPluginInterface& operator=(const GenericPluginInterface&) = delete;

    gui::UserInterface& ui() const { return ui_; }
    gui::RootControl& root() const { return ui_.rootControl(); }
    GenericPlugin& model() const { return model_; }
    gui::Animator& animator() { return animator_; }
    ParameterGestures& gestures() { return gestures_; }
    ParameterBindings& bindings() { return bindings_; }
    ParameterValueDisplay& valueDisplay() const { return *valueDisplay_; }
    Notices& notices() { return notices_; }
    PresetCommands& presets() { return presets_; }
    Commands& commands() { return commands_; }

    /// A picture behind all controls, grown to the root's size, as it is now. False, and what was there
    /// stays, if there is no such picture.
    bool setBackground(const std::string& imageName);
    /// The host, from when it shows the interface; null when it goes.
    void attachEditor(Editor* editor);
    /// Ties a control to a parameter; see ParameterBindings.
    void bindControl(int index, gui::ValueControl* control) { bindings_.bind(index, control); }
    /// The parameter of the control at a point of the window, or -1.
    int parameterAt(gui::Point windowPoint) const;
    /// A step of undo for what was not a control's gesture. On any thread.
    void pushUndo(int index = -1);
    /// Arrives at `interfaceEvent`. On any thread.
    void postEvent(int key, int value = 0);
    /// Told of each new channel layout, and of the present one at once. The interface keeps it.
    void addChannelDelegate(std::unique_ptr<ChannelLayoutDelegate> delegate);
    /// Of the current preset, as a button shows it.
    std::string presetName() const;
    bool isPresetModified() const;

    void interfaceEvent(int key, int value) override;
    void hintChanged(const std::string& /*text*/) override {}
    bool keyPressed(const gui::KeyPress& key) override;
    void backingScaleChanged() override;

protected:
    // What a product's interface follows. The bound controls and the value display are up to date by then.

    /// Index of a parameter whose value may have changed, or event::kAllParameters: then it is not called
    /// for each of them.
    virtual void parameterChanged(int /*index*/) {}
    virtual void presetChanged() {}
    virtual void controllerMoved(int /*controller*/) {}
    virtual void controllerMapChanged() {}
    virtual void channelLayoutChanged() {}

    void controlBound(gui::ValueControl& control, int index) override;
    void controlRightClicked(gui::ValueControl& /*control*/) override {}
    void displayChanged() override;

    /// Ends all that may still call a derived class, and deletes the controls. The first statement of each
    /// derived destructor.
    void close();

private:
    void frame(void*) { link_->frame(); }
    void showParameter(int index);
    void tellDelegates();

    gui::UserInterface& ui_;
    GenericPlugin& model_;
    gui::Animator animator_;
    ParameterGestures gestures_;
    ParameterBindings bindings_;
    ParameterValueDisplay* valueDisplay_;  ///< the tree's
    Notices notices_;
    PresetCommands presets_;
    Commands commands_;
    std::vector<std::unique_ptr<ChannelLayoutDelegate>> delegates_;
    bool refreshPending_ = false;  ///< a kRefreshView is on its way
    bool closed_ = false;
    std::unique_ptr<ModelLink> link_;  ///< null once closed
};

}  // namespace vanta::interface
