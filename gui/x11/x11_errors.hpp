#pragma once

#include "gui/x11/x11_headers.hpp"

namespace vanta::gui {

/// Makes errors of this connection count instead of ending the process, as a parent window may go at any
/// moment. What other windows of the process do with theirs stays as it is.
void catchErrors(Display* display);
/// After the connection is closed, which may be when it turns out to have ended.
void stopCatchingErrors(Display* display);
/// Errors that this thread has received so far, of all its connections.
unsigned caughtErrors();

}  // namespace vanta::gui
