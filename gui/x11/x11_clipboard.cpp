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
    XSelectInput(display_.get(), window_, PropertyChangeMask);
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
    const bool answered = await(SelectionNotify, answer, [](const XEvent&) { return true; });
    if (!answered || answer.xselection.property == kNoXid) return {};
    return readAnswer(answer.xselection.property);
}

template <typename Condition>
bool X11Clipboard::await(int type, XEvent& event, Condition condition) {
    const SteadyIntervalTimer clock;
    while (!display_.isBroken()) {
        while (XCheckTypedWindowEvent(display_.get(), window_, type, &event)) {
            if (condition(event)) return true;
        }
        const auto left = static_cast<int>(kPatienceMs - clock.elapsed());
        if (left <= 0) return false;
        pollfd connection{ConnectionNumber(display_.get()), POLLIN, 0};
        poll(&connection, 1, left);
    }
    return false;
}

/// Deletes it: that asks for the next one.
X11Clipboard::Piece X11Clipboard::takePiece(Atom property) {
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* bytes = nullptr;
    Piece piece;
    const bool read =
        XGetWindowProperty(display_.get(), window_, property, 0, kGreatestText / 4, kXTrue, AnyPropertyType,
                           &piece.type, &format, &count, &left, &bytes) == kXSuccess;
    if (read && bytes && format == 8) piece.bytes.assign(reinterpret_cast<const char*>(bytes), count);
    if (bytes) XFree(bytes);
    return piece;
}

std::string X11Clipboard::readAnswer(Atom property) {
    // Of the answer that lies there; those of pieces come after it has been taken.
    XEvent stale{};
    while (XCheckTypedWindowEvent(display_.get(), window_, PropertyNotify, &stale)) {
    }
    Piece answer = takePiece(property);
    if (answer.type == display_.atom("INCR")) return readPieces(property);
    return answer.type == display_.atom("UTF8_STRING") ? std::move(answer.bytes) : std::string{};
}

/// What is too long for one answer comes in pieces, of which the last is empty. Nothing of what is longer
/// than any text of ours.
std::string X11Clipboard::readPieces(Atom property) {
    const auto isNew = [&](const XEvent& event) {
        return event.xproperty.atom == property && event.xproperty.state == PropertyNewValue;
    };
    std::string text;
    XEvent event{};
    while (await(PropertyNotify, event, isNew)) {
        const Piece piece = takePiece(property);
        if (piece.bytes.empty()) return text;
        text += piece.bytes;
        if (text.size() > kGreatestText) return {};
    }
    return {};
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
