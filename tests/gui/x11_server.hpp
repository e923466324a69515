#pragma once

#include <X11/extensions/XTest.h>

#include <functional>
#include <string>
#include <vector>

#include "gui/x11/x11_headers.hpp"
#include "gui/x11/x11_interface.hpp"

namespace vanta::gui {

/// An X server of the test's own, without a screen, and somebody who sits before it: everything goes through
/// another connection than that of the interfaces.
class X11Server {
public:
    static X11Server& get();
    explicit X11Server(const std::vector<std::string>& options = {});
    ~X11Server();

    Display* display() const { return display_; }
    const std::string& name() const { return name_; }
    /// Of the system's numbers.
    int process() const { return process_; }
    /// As it counts them: its connections, ours among them.
    int clients() const;
    Window root() const { return DefaultRootWindow(display_); }

    void movePointer(int x, int y);
    void press(unsigned button = 1) { button_(button, true); }
    void release(unsigned button = 1) { button_(button, false); }
    void click(unsigned button = 1);
    void holdKey(KeySym symbol, bool down);
    void typeKey(KeySym symbol);
    /// A window on the screen that is not an interface's.
    Window makeWindow(int x, int y, unsigned width, unsigned height);
    void sync() { XSync(display_, kXFalse); }
    /// What can be seen there, as 0xRRGGBB, row by row; nothing as long as the window is not shown.
    std::vector<unsigned> pixels(Window window, int width, int height);
    std::vector<Window> children(Window window);
    /// Milliseconds at most that a test waits for anything.
    static constexpr int kPatienceMs = 5000;

private:
    void button_(unsigned button, bool down);

    int process_ = -1;
    std::string name_;
    Display* display_ = nullptr;
};

/// Runs the interface as a host does, until the condition holds. False if it never does.
bool runUntil(X11Interface& interface, const std::function<bool()>& condition);
/// Runs it until all that has been done to it has arrived.
void settle(X11Interface& interface);

}  // namespace vanta::gui
