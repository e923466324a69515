#pragma once

// Xlib defines common words as macros, our own among them. What this room needs of those has a name of its
// own here, and the macros end here.

#include <GL/glx.h>
#include <X11/XKBlib.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xproto.h>
#include <X11/Xresource.h>
#include <X11/Xutil.h>
#include <X11/cursorfont.h>
#include <X11/extensions/XInput2.h>
#include <X11/extensions/XShm.h>
#include <X11/extensions/Xrandr.h>
#include <X11/keysym.h>

namespace vanta::gui {

inline constexpr unsigned long kNoXid = None;
inline constexpr int kXSuccess = Success;
inline constexpr int kXTrue = True;
inline constexpr int kXFalse = False;
inline constexpr int kKeyPressEvent = KeyPress;
inline constexpr int kKeyReleaseEvent = KeyRelease;
inline constexpr int kFocusOutEvent = FocusOut;

}  // namespace vanta::gui

#undef Always
#undef Bool
#undef Complex
#undef CursorShape
#undef False
#undef FocusIn
#undef FocusOut
#undef KeyPress
#undef KeyRelease
#undef None
#undef Status
#undef Success
#undef True
