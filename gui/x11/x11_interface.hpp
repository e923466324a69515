#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "gui/graphics/device_backing.hpp"
#include "gui/opengl/acceleration_mode.hpp"
#include "gui/tree/user_interface.hpp"

union _XEvent;

namespace vanta::gui {

class X11Clipboard;
class X11Control;
class X11Timers;
struct X11Session;

/// How an interface appears.
struct X11Settings {
    unsigned long parentWindow = 0;  ///< of a host, to live in; 0 for a window of its own
    std::string title;
    float width = 640.0f;  ///< logical units
    float height = 480.0f;
    float scale = 0.0f;  ///< device pixels of a logical unit, snapped to 1, 1.5 or 2; 0: as the desktop wants
    std::string displayName;                        ///< empty for the environment's
    int acceleration = AccelerationMode::kDefault;  ///< as AccelerationMode has it
};

/// An interface in a window of X. A program of its own calls `run`; a plug-in has its host call `idle`
/// whenever `fd` can be read, and every 16 to 20 milliseconds at least. All on the thread that makes it.
///
/// Where OpenGL draws, `accelerated` is true and a thread paints the tree and runs frame timers, all under
/// the root's lock. Events, timers, deferred calls and handlers hold it; whoever touches the tree at any
/// other time does so in a RootControl::MessageScope.
///
/// Nothing here ends the process: a window that its parent takes along, or a server that goes, closes the
/// interface, which then is to be deleted.
class X11Interface : public UserInterface {
public:
    /// Throws std::runtime_error if there is no display, or no such parent.
    explicit X11Interface(const X11Settings& settings);
    ~X11Interface() override;

    std::unique_ptr<Bitmap> createBitmap() override;
    /// Dialogs are the desktop's: of its portal where that answers, else by zenity.
    std::unique_ptr<OpenSaveDialog> createOpenDialog() override;
    std::unique_ptr<OpenSaveDialog> createSaveDialog() override;
    std::unique_ptr<SelectFolderDialog> createSelectFolderDialog() override;
    std::unique_ptr<PopupMenu> createPopupMenu() override;
    std::unique_ptr<Text> createText() override;
    std::unique_ptr<TextEditor> createTextEditor() override;
    std::unique_ptr<Timer> createTimer() override;
    RootControl& rootControl() override;
    /// By zenity, or in the window itself where that is missing. A window that closes meanwhile, and one that
    /// is not shown, has Cancel for an answer where that is a choice: nobody could agree.
    bool showMessage(const std::string& text, int flags) override;

    /// The user, a window manager or the loss of the window wants the interface closed. Whoever hears it
    /// deletes the interface later, by a deferred call or after `run` or `idle`.
    NotifyEvent onClose;

    void show();
    void hide();
    /// For a top-level: what the window manager writes on it, and the window that it stays above.
    void setTitle(const std::string& title);
    void setTransientFor(unsigned long window);
    /// The window's number, for a host; 0 once it has been destroyed.
    unsigned long window() const;
    /// The window and the connection to the server are there.
    bool isOpen() const;
    /// Width and height of the monitor that the window is on, without what the desktop keeps for its panels;
    /// logical units.
    Point workArea() const;
    DeviceBacking& deviceBacking() override;
    /// Snapped as in the settings; 0 follows the desktop again.
    void setScaleOverride(float scale);

    /// UTF-8; empty where there is no text.
    std::string clipboard() override;
    void setClipboard(const std::string& text) override;

    /// Returns when the interface is closed or `quit` is called.
    void run();
    void quit() { quit_ = true; }
    /// As `run`, inside a handler, until `done`: the root's lock is given away meanwhile. Afterwards the
    /// interface may have gone, as the relay knows.
    void runNested(const std::function<bool()>& done);
    /// The same with nothing of the interface to be used.
    void runModal(const std::function<bool()>& done);
    /// Can be read when something has happened.
    int fd() const { return poll_; }
    /// Deals with all that has happened or is due, and returns. Afterwards the interface may have gone.
    void idle();

protected:
    void wake() override;

private:
    friend class X11Control;

    X11Control* makeRoot(const X11Settings& settings);
    void openDescriptors();
    void closeDescriptors();
    void wait();
    std::int64_t nextWake(std::int64_t now) const;
    void handleEvents();
    void dispatch(_XEvent& event);
    void dispatchInput(_XEvent& event);
    void runTimers(std::int64_t now);
    void drain();
    void frameIfDue(std::int64_t now);
    void desktopScaleChanged();
    void applyScale(float scale);
    void windowLost();
    void closeRequested();

    std::shared_ptr<X11Session> session_;
    std::unique_ptr<X11Timers> timers_;
    std::unique_ptr<X11Clipboard> clipboard_;
    float scaleOverride_;
    X11Control* root_ = nullptr;
    int wakeUp_ = -1;
    int poll_ = -1;
    bool quit_ = false;
    bool closed_ = false;
    std::int64_t lastFrame_ = 0;
};

/// What a desktop offers to a window that is still to be opened.
struct X11Desktop {
    float scale = 1.0f;  ///< device pixels of a logical unit, snapped
    float width = 0.0f;  ///< logical units, of all monitors together
    float height = 0.0f;
};
/// By the display's name, empty for the environment's. Throws std::runtime_error if there is no display.
X11Desktop readDesktop(const std::string& displayName = {});

/// To the scales that pictures are made for: above 1.6 it is 2, above 1.4 it is 1.5, else 1.
float snappedScale(float scale);

}  // namespace vanta::gui
