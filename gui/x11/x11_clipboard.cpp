#include "gui/x11/x11_clipboard.hpp"

#include <poll.h>

#include <algorithm>
#include <array>
#include <utility>

#include "foundation/interval_timer.hpp"

namespace vanta::gui {

X11Clipboard::X11Clipboard(X11Display& display)
    : display_(display),
      window_(
          XCreateWindow(display.get(), display.root(), -1, -1, 1, 1, 0, 0, InputOnly, nullptr, 0, nullptr)) {
    display_.addTarget(window_, *this);
}

X11Clipboard::~X11Clipboard() {
    display_.removeTarget(window_);
    XDestroyWindow(display_.get(), window_);
}

bool X11Clipboard::ownsClipboard() {
    return XGetSelectionOwner(display_.get(), display_.atom("CLIPBOARD")) == window_;
}

void X11Clipboard::setText(std::string text) {
    text_ = std::move(text);
    XSetSelectionOwner(display_.get(), display_.atom("CLIPBOARD"), window_, display_.eventTime());
    XFlush(display_.get());
}

std::string X11Clipboard::text() {
    if (display_.isBroken()) return {};
    if (ownsClipboard()) return text_;
    XEvent answer{};
    // One that comes too late is for a request that nobody remembers.
    while (XCheckTypedWindowEvent(display_.get(), window_, SelectionNotify, &answer)) {
    }
    XConvertSelection(display_.get(), display_.atom("CLIPBOARD"), display_.atom("UTF8_STRING"),
                      display_.atom("VANTA_CLIPBOARD"), window_, display_.eventTime());
    if (!awaitAnswer(answer) || answer.xselection.property == kNoXid) return {};
    return readAnswer(answer.xselection.property);
}

bool X11Clipboard::awaitAnswer(XEvent& answer) {
    const SteadyIntervalTimer clock;
    while (!display_.isBroken()) {
        if (XCheckTypedWindowEvent(display_.get(), window_, SelectionNotify, &answer)) return true;
        const auto left = static_cast<int>(kPatienceMs - clock.elapsed());
        if (left <= 0) return false;
        pollfd connection{ConnectionNumber(display_.get()), POLLIN, 0};
        poll(&connection, 1, left);
    }
    return false;
}

std::string X11Clipboard::readAnswer(Atom property) {
    Atom type = kNoXid;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* bytes = nullptr;
    std::string text;
    const bool read = XGetWindowProperty(display_.get(), window_, property, 0, kGreatestText / 4, kXTrue,
                                         AnyPropertyType, &type, &format, &count, &left, &bytes) == kXSuccess;
    // What is sent in pieces is longer than any text of ours.
    if (read && bytes && format == 8 && type == display_.atom("UTF8_STRING"))
        text.assign(reinterpret_cast<const char*>(bytes), count);
    if (bytes) XFree(bytes);
    return text;
}

void X11Clipboard::handleEvent(XEvent& event) {
    if (event.type == SelectionRequest) answer(event.xselectionrequest);
}

void X11Clipboard::answer(const XSelectionRequestEvent& request) {
    const Atom utf8 = display_.atom("UTF8_STRING");
    const Atom targets = display_.atom("TARGETS");
    // Clients of old name no property.
    const Atom property = request.property == kNoXid ? request.target : request.property;
    XEvent reply{};
    reply.xselection.type = SelectionNotify;
    reply.xselection.requestor = request.requestor;
    reply.xselection.selection = request.selection;
    reply.xselection.target = request.target;
    reply.xselection.time = request.time;
    reply.xselection.property = property;
    if (request.target == utf8) {
        XChangeProperty(display_.get(), request.requestor, property, utf8, 8, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(text_.data()), static_cast<int>(text_.size()));
    } else if (request.target == targets) {
        const std::array<Atom, 2> known{targets, utf8};
        XChangeProperty(display_.get(), request.requestor, property, XA_ATOM, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(known.data()), static_cast<int>(known.size()));
    } else {
        reply.xselection.property = kNoXid;
    }
    XSendEvent(display_.get(), request.requestor, kXFalse, NoEventMask, &reply);
}

}  // namespace vanta::gui
