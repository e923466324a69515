#pragma once

#include "gui/graphics/geometry.hpp"
#include "gui/x11/x11_headers.hpp"

namespace vanta::gui {

/// What the pointer or a wheel has done, from whichever of X's two kinds of events.
struct PointerEvent {
    enum class Kind { Press, Release, Move, Enter, Leave };

    Kind kind = Kind::Move;
    Window window = kNoXid;
    unsigned button = 0;  ///< of X, from 1; 4 to 7 never come here
    Point position;       ///< in the window, in device pixels
    Point onScreen;
    int modifiers = 0;  ///< as `modifier` has them, after the event
    Time time = 0;
    Point clicks;         ///< of the wheel; positive is up and right
    bool byGrab = false;  ///< of Leave: somebody has taken the pointer
};

/// Of X's mask of keys and buttons. Super counts as Alt as well, since window managers keep Alt and the
/// pointer for themselves.
int toModifiers(unsigned state);
/// The bit of a button of X, 0 for none.
int buttonModifier(unsigned button);

/// A button has gone down or up; the wheel's are clicks.
void takeButton(PointerEvent& pointer, unsigned button, bool pressed);
/// False if the event is none of the pointer.
bool fromCore(const XEvent& event, PointerEvent& pointer);

}  // namespace vanta::gui
