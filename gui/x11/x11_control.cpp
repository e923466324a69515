#include "gui/x11/x11_control.hpp"

#include <algorithm>
#include <utility>

#include "gui/x11/x11_interface.hpp"
#include "gui/x11/x11_window.hpp"

namespace vanta::gui {

X11Control::X11Control(X11Interface& interface, X11Session& session, Window parentWindow,
                       const std::string& title)
    : RootControl(interface),
      owner_(interface),
      session_(session),
      keys_(session.display),
      title_(title),
      parentWindow_(parentWindow) {
    X11Display& x = session_.display;
    if (x.inputOpcode() >= 0) pointer_.emplace(x);
    const bool isTopLevel = parentWindow_ == kNoXid;
    attach(createWindow(x, isTopLevel ? x.root() : parentWindow_, {0, 0, 1, 1}));
    windowSize_ = {1, 1};
    if (isTopLevel) {
        makeTopLevel(x, window_, title_, false);
    } else {
        makeEmbedded(x, window_);
    }
}

X11Control::~X11Control() {
    keys_.setWindow(kNoXid);
    for (const Window window : {window_, storedWindow_}) {
        if (window == kNoXid) continue;
        session_.display.removeTarget(window);
        XDestroyWindow(display(), window);
    }
    XFlush(display());
}

void X11Control::attach(Window window) {
    window_ = window;
    keys_.setWindow(window);
    if (window == kNoXid) return;
    session_.display.addTarget(window, *this);
    if (pointer_) pointer_->select(window);
}

void X11Control::show() {
    if (window_ != kNoXid) XMapWindow(display(), window_);
}

void X11Control::hide() {
    if (storedWindow_ != kNoXid) fullScreen = false;
    if (window_ != kNoXid) XUnmapWindow(display(), window_);
}

void X11Control::setTitle(const std::string& title) {
    title_ = title;
    if (window_ != kNoXid) writeTitle(session_.display, window_, title_);
}

bool X11Control::needsFrame() const {
    return newSize_ || pendingMove_ || needsPainting();
}

bool X11Control::needsPainting() const {
    return isMapped() && !dirtyRect().isEmpty();
}

void X11Control::frame() {
    const MessageScope scope(*this);
    applySize();
    if (scope.rootIsAlive()) flushMove();
    if (scope.rootIsAlive() && needsPainting()) paintDirty();
}

void X11Control::applySize() {
    if (!newSize_) return;
    const DevicePoint size = *std::exchange(newSize_, std::nullopt);
    if (size != windowSize_ || size != deviceSize()) follow(size);
}

/// The window has this size already; the tree gets it.
void X11Control::follow(DevicePoint size) {
    const MessageScope scope(*this);
    const float scale = session_.backing.scale();
    windowSize_ = size;
    followingServer_ = true;
    bounds = Rect{0.0f, 0.0f, static_cast<float>(size.x) / scale, static_cast<float>(size.y) / scale};
    if (scope.rootIsAlive()) followingServer_ = false;
}

DevicePoint X11Control::deviceSize() const {
    const float scale = session_.backing.scale();
    return {std::max(1, toDevice(localBounds().right, scale)),
            std::max(1, toDevice(localBounds().bottom, scale))};
}

void X11Control::resized() {
    const DevicePoint size = deviceSize();
    deviceSizeChanged(size);
    if (!followingServer_ && window_ != kNoXid && size != windowSize_) resizeWindow(size);
    RootControl::resized();
}

void X11Control::resizeWindow(DevicePoint size) {
    if (storedWindow_ != kNoXid) {
        // In full screen the monitor decides: the tree comes back to it.
        newSize_ = windowSize_;
        return;
    }
    windowSize_ = size;
    newSize_.reset();
    resizeRequest_ = NextRequest(display());
    XResizeWindow(display(), window_, static_cast<unsigned>(size.x), static_cast<unsigned>(size.y));
    // A host that has asked for it goes on with a window of this size.
    XFlush(display());
}

void X11Control::enterFullScreen() {
    if (window_ == kNoXid || storedWindow_ != kNoXid) return;
    X11Display& x = session_.display;
    const DeviceRect monitor = x.monitorAt(areaOnScreen(x, window_));
    const Window full = createWindow(x, x.root(), monitor);
    makeTopLevel(x, full, title_, true);
    platformCancelMode();
    storedWindow_ = window_;
    attach(full);
    XMapRaised(display(), full);
    newSize_.reset();
    follow({monitor.width(), monitor.height()});
    markDirty();
}

void X11Control::leaveFullScreen() {
    if (storedWindow_ == kNoXid) return;
    platformCancelMode();
    const Window full = window_;
    session_.display.removeTarget(full);
    attach(std::exchange(storedWindow_, kNoXid));
    XDestroyWindow(display(), full);
    newSize_.reset();
    const DeviceRect area = areaOnScreen(session_.display, window_);
    if (!area.isEmpty()) follow({area.width(), area.height()});
    markDirty();
    takeKeyboard();
}

/// A window has been destroyed, with its parent or by itself.
void X11Control::lost(Window window) {
    const MessageScope scope(*this);
    shutdownRendering();
    session_.display.removeTarget(window);
    if (window == storedWindow_) {
        storedWindow_ = kNoXid;
        session_.display.removeTarget(window_);
        XDestroyWindow(display(), window_);
    }
    window_ = kNoXid;
    mapped_ = false;
    keys_.setWindow(kNoXid);
    pendingMove_.reset();
    fullScreen = false;
    platformCancelMode();
    if (scope.rootIsAlive()) platformMouseLeave();
    if (scope.rootIsAlive()) owner_.windowLost();
}

}  // namespace vanta::gui
