#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <system_error>

#include "gui/controls/dialog.hpp"
#include "gui/x11/native_x11_control.hpp"
#include "gui/x11/x11_interface.hpp"
#include "gui/x11/x11_timer.hpp"

namespace vanta::gui {
namespace {

/// Milliseconds from one frame to the next.
constexpr std::int64_t kFrameMs = 16;
/// The audio thread cannot wake us: what it posts waits no longer than this.
constexpr std::int64_t kTickMs = 50;

std::int64_t now() {
    return SteadyIntervalTimer::monotonicMilliseconds();
}

}  // namespace

void X11Interface::openDescriptors() {
    wakeUp_ = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    poll_ = epoll_create1(EPOLL_CLOEXEC);
    bool watched = wakeUp_ >= 0 && poll_ >= 0;
    for (const int source : {ConnectionNumber(session_->display.get()), wakeUp_}) {
        epoll_event interest{};
        interest.events = EPOLLIN;
        watched = watched && epoll_ctl(poll_, EPOLL_CTL_ADD, source, &interest) == 0;
    }
    if (watched) return;
    const int error = errno;
    closeDescriptors();
    throw std::system_error(error, std::generic_category(), "no event loop can be made");
}

void X11Interface::closeDescriptors() {
    if (poll_ >= 0) close(poll_);
    if (wakeUp_ >= 0) close(wakeUp_);
}

void X11Interface::wake() {
    const std::uint64_t one = 1;
    // It fails only when the counter is full: then the loop is awake already.
    [[maybe_unused]] const ssize_t written = write(wakeUp_, &one, sizeof one);
}

void X11Interface::run() {
    const std::shared_ptr<EventRelay> shared = relay();
    quit_ = false;
    while (shared->isOpen() && isOpen() && !quit_) {
        wait();
        idle();
    }
}

void X11Interface::runNested(const std::function<bool()>& done) {
    const std::shared_ptr<EventRelay> shared = relay();
    const RootControl::LockGivenAway given(*root_);
    while (shared->isOpen() && isOpen() && !quit_ && !done()) {
        wait();
        idle();
    }
}

void X11Interface::runModal(const std::function<bool()>& done) {
    const RootControl::MessageScope scope(*root_);
    auto* shield = &make<Dialog>();
    const std::shared_ptr<const bool> liveness = shield->liveness();
    runNested(done);
    if (*liveness) delete shield;
}

std::int64_t X11Interface::nextWake(std::int64_t time) const {
    const std::int64_t tick = time + kTickMs;
    return timers_->nextDue(root_->needsFrame() ? std::min(tick, lastFrame_ + kFrameMs) : tick);
}

void X11Interface::wait() {
    if (XPending(session_->display.get()) > 0) return;
    const std::int64_t time = now();
    const auto left = static_cast<int>(std::max<std::int64_t>(nextWake(time) - time, 0));
    epoll_event happened{};
    epoll_wait(poll_, &happened, 1, left);
}

void X11Interface::idle() {
    const std::shared_ptr<EventRelay> shared = relay();
    const std::shared_ptr<X11Session> session = session_;
    std::uint64_t wakeUps = 0;
    [[maybe_unused]] const ssize_t count = read(wakeUp_, &wakeUps, sizeof wakeUps);
    handleEvents();
    if (shared->isOpen()) runTimers(now());
    if (shared->isOpen()) drain();
    if (shared->isOpen()) frameIfDue(now());
    if (!session->display.isBroken()) XFlush(session->display.get());
    if (shared->isOpen() && !isOpen()) windowLost();
}

/// Those that are there: what comes meanwhile waits, so that a flood does not keep frames from being painted.
void X11Interface::handleEvents() {
    const std::shared_ptr<EventRelay> shared = relay();
    const std::shared_ptr<X11Session> session = session_;
    X11Display& x = session->display;
    for (int count = XPending(x.get()); count > 0 && shared->isOpen() && !x.isBroken(); --count) {
        // A nested loop may have taken the rest.
        if (XEventsQueued(x.get(), QueuedAlready) == 0) return;
        XEvent event{};
        XNextEvent(x.get(), &event);
        if (XFilterEvent(&event, kNoXid)) continue;
        dispatch(event);
    }
}

void X11Interface::dispatch(XEvent& event) {
    X11Display& x = session_->display;
    const RootControl::MessageScope scope(*root_);
    if (event.type == GenericEvent) {
        dispatchInput(event);
        return;
    }
    if (event.type == PropertyNotify && event.xproperty.window == x.root()) {
        if (event.xproperty.atom == XA_RESOURCE_MANAGER) desktopScaleChanged();
        return;
    }
    if (event.type == MappingNotify) {
        XRefreshKeyboardMapping(&event.xmapping);
        return;
    }
    // Events of the tree of windows tell whose they are by another field.
    X11EventTarget* target = x.target(event.xany.window);
    if (!target) return;
    PointerEvent pointer;
    if (fromCore(event, pointer)) {
        x.noteTime(pointer.time);
        target->handlePointer(pointer);
    } else {
        if (event.type == kKeyPressEvent) x.noteTime(event.xkey.time);
        target->handleEvent(event);
    }
}

void X11Interface::dispatchInput(XEvent& event) {
    X11Display& x = session_->display;
    if (event.xcookie.extension != x.inputOpcode() || XGetEventData(x.get(), &event.xcookie) == 0) return;
    PointerEvent pointer;
    const bool isPointer = root_->readInput(event.xcookie, pointer);
    XFreeEventData(x.get(), &event.xcookie);
    if (!isPointer) return;
    x.noteTime(pointer.time);
    if (X11EventTarget* target = x.target(pointer.window)) target->handlePointer(pointer);
}

void X11Interface::runTimers(std::int64_t time) {
    const std::shared_ptr<EventRelay> shared = relay();
    while (shared->isOpen()) {
        X11Timer* timer = timers_->due(time);
        if (!timer) return;
        const RootControl::MessageScope scope(*root_);
        timer->tick(time);
    }
}

void X11Interface::drain() {
    const RootControl::MessageScope scope(*root_);
    drainRelay();
}

void X11Interface::frameIfDue(std::int64_t time) {
    if (!root_->needsFrame() || time - lastFrame_ < kFrameMs) return;
    lastFrame_ = time;
    root_->frame();
}

}  // namespace vanta::gui
