#include "gui/x11/x11_errors.hpp"

#include <mutex>
#include <set>

// Of Xlib's header for extensions, which is made of macros.
extern "C" int (*XESetWireToError(Display*, int,
                                  int (*)(Display*, XErrorEvent*, xError*)))(Display*, XErrorEvent*, xError*);

namespace vanta::gui {
namespace {

constexpr int kErrorCodes = 256;

thread_local unsigned errors = 0;

/// Xlib asks this before it calls the process-wide handler, which false keeps it from.
int countError(Display* /*display*/, XErrorEvent* /*told*/, xError* /*received*/) {
    ++errors;
    return kXFalse;
}

/// A connection that ends has nothing but a handler of the whole process, and Xlib's own calls exit.
std::mutex connectionsMutex;
/// One that is opened on another thread may lie where one has just been closed.
std::multiset<Display*> connections;
XIOErrorHandler othersHandler = nullptr;

int connectionEnded(Display* display) {
    XIOErrorHandler pass = nullptr;
    {
        const std::lock_guard lock(connectionsMutex);
        if (!connections.contains(display)) pass = othersHandler;
    }
    return pass ? pass(display) : 0;
}

}  // namespace

void catchErrors(Display* display) {
    for (int code = 1; code < kErrorCodes; ++code) XESetWireToError(display, code, &countError);
    const std::lock_guard lock(connectionsMutex);
    if (connections.empty()) {
        const XIOErrorHandler former = XSetIOErrorHandler(&connectionEnded);
        if (former != &connectionEnded) othersHandler = former;
    }
    connections.insert(display);
}

void stopCatchingErrors(Display* display) {
    const std::lock_guard lock(connectionsMutex);
    connections.erase(connections.find(display));
    if (!connections.empty()) return;
    // Somebody who has come after us, and calls us in turn, stays.
    const XIOErrorHandler current = XSetIOErrorHandler(othersHandler);
    if (current != &connectionEnded) XSetIOErrorHandler(current);
}

unsigned caughtErrors() {
    return errors;
}

}  // namespace vanta::gui
