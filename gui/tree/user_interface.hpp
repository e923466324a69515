#pragma once

#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "foundation/interval_timer.hpp"
#include "foundation/notify_event.hpp"
#include "foundation/property.hpp"
#include "gui/graphics/device_backing.hpp"
#include "gui/graphics/geometry.hpp"
#include "gui/tree/event_relay.hpp"
#include "gui/tree/hints.hpp"
#include "gui/tree/menu_guard.hpp"

namespace vanta::gui {

class Bitmap;
class Canvas;
class Component;
class OpenSaveDialog;
class PopupMenu;
class RootControl;
class SelectFolderDialog;
class Text;
class TextEditor;
class Timer;
struct KeyPress;

/// A tree of controls in one window, and all that it needs of the platform. It belongs to the thread that
/// makes it; what other threads may do says so.
///
/// A derived class makes the root control, and in its destructor calls `shutDown` before anything of its own
/// goes.
class UserInterface : public PropertyOwner {
public:
    using Listener = InterfaceListener;

    /// Asked before a press goes to the controls.
    class MouseHook {
    public:
        virtual ~MouseHook() = default;
        /// False: the press goes no further.
        virtual bool mousePressed(int button, Point point, int modifiers) = 0;
        /// Asked first, for each event of the pointer: modifiers with those that only a host knows of.
        virtual int withHostModifiers(int modifiers) const { return modifiers; }
    };

    /// Takes keys that no control has used, while the window has the keyboard.
    class KeyHook {
    public:
        virtual ~KeyHook() = default;
        /// True: the key has been used, and the host does not get it.
        virtual bool keyPressed(const KeyPress& key) = 0;
    };

    /// Bits of `showMessage`.
    static constexpr int kConfirmation = 1;
    static constexpr int kWithCancel = 2;

    /// Within this time and distance (logical units) two presses are a double click.
    static constexpr int kDoubleClickMs = 400;
    static constexpr float kDoubleClickDistance = 4.0f;

    /// `clock` gives milliseconds, as SteadyIntervalTimer takes it.
    explicit UserInterface(SteadyIntervalTimer::Clock clock = &SteadyIntervalTimer::monotonicMilliseconds);
    ~UserInterface() override;
    UserInterface(const UserInterface&) = delete;
    UserInterface& operator=(const UserInterface&) = delete;

    virtual std::unique_ptr<Bitmap> createBitmap() = 0;
    virtual std::unique_ptr<OpenSaveDialog> createOpenDialog() = 0;
    virtual std::unique_ptr<OpenSaveDialog> createSaveDialog() = 0;
    virtual std::unique_ptr<SelectFolderDialog> createSelectFolderDialog() = 0;
    virtual std::unique_ptr<PopupMenu> createPopupMenu() = 0;
    virtual std::unique_ptr<Text> createText() = 0;
    virtual std::unique_ptr<TextEditor> createTextEditor() = 0;
    virtual std::unique_ptr<Timer> createTimer() = 0;
    /// What gestures, animations and guards measure time with.
    std::unique_ptr<IntervalTimer> createClock() const;
    virtual RootControl& rootControl() = 0;
    /// True if the user chose Cancel.
    virtual bool showMessage(const std::string& text, int flags) = 0;
    /// What was copied last, in UTF-8; without a platform's clipboard, within this interface.
    virtual std::string clipboard() { return clipboard_; }
    virtual void setClipboard(const std::string& copied) { clipboard_ = copied; }
    /// The name of a modifier as the platform's users know it, or nothing.
    virtual std::string modifierName(int modifierBit) const;
    /// All is laid out and painted anew, as after a change of scale.
    virtual void refresh();

    /// A component that the interface deletes in the end, unless somebody has done so before.
    template <typename T, typename... Arguments>
    T& make(Arguments&&... arguments) {
        return *new T(*this, std::forward<Arguments>(arguments)...);
    }

    void showHint(const std::string& text) { hints_.show(*this, text); }
    void hideHint() { hints_.hide(); }
    Hints& hints() { return hints_; }

    /// Calls `target.deferredCall(argument)` when whoever asks is off the stack, unless the target has gone
    /// by then. On any thread that holds the root's lock.
    void postDeferred(Component& target, int argument) { relay_->postDeferred(target, argument); }
    /// By the platform, on its tick and after each wake-up.
    void drainRelay();
    const std::shared_ptr<EventRelay>& relay() const { return relay_; }
    void addListener(Listener& listener) { relay_->addListener(listener); }
    void removeListener(const Listener& listener) { relay_->removeListener(listener); }

    MenuGuard& menuGuard() { return menuGuard_; }
    bool menuJustClosed() { return menuGuard_.justClosed(); }

    /// By the render thread, once a frame, under the root's lock.
    void tickFrameTimers();
    bool isInterfaceThread() const { return std::this_thread::get_id() == interfaceThread_; }
    /// Whether the interface is going: the tree is not to be touched any more.
    bool isDestroying() const { return destroying_; }

    /// The scale of the display, and who wants to hear of it. The platform changes it and calls `refresh`.
    virtual DeviceBacking& deviceBacking() { return deviceBacking_; }
    /// Puts a picture behind all controls, grown to the root's size: its right part once more on the right.
    /// Throws EBitmap, and leaves what was there.
    void loadBackdrop(const std::string& imageName);
    /// Draws what stands behind all controls. False if there is nothing.
    virtual bool paintBackdrop(Canvas& canvas);

    NotifyEvent onRefresh;
    /// Whether a render thread draws the window.
    Property<bool> accelerated{this, false};
    MouseHook* mouseHook = nullptr;
    KeyHook* keyHook = nullptr;

    void propertyChanged(AbstractProperty& property) override;

protected:
    /// Makes the platform drain the relay soon. Called on any thread but the audio thread's.
    virtual void wake() {}
    /// Deletes all components. The first statement of a derived class's destructor.
    void shutDown();

private:
    friend class Component;
    friend class Timer;

    void forget(Component& component);
    void addFrameTimer(Timer& timer) { frameTimers_.push_back(&timer); }
    void removeFrameTimer(Timer& timer);

    SteadyIntervalTimer::Clock clock_;
    std::thread::id interfaceThread_ = std::this_thread::get_id();
    bool destroying_ = false;
    DeviceBacking deviceBacking_;       ///< outlives all that holds pixels
    std::unique_ptr<Bitmap> backdrop_;  ///< null until a picture is loaded
    std::string backdropName_;
    std::vector<Component*> components_;
    std::vector<Timer*> frameTimers_;
    bool tickingFrames_ = false;
    std::shared_ptr<EventRelay> relay_;
    std::string clipboard_;
    Hints hints_;
    MenuGuard menuGuard_;
};

}  // namespace vanta::gui
