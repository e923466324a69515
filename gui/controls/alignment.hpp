#pragma once

#include "gui/graphics/text.hpp"

namespace vanta::gui {

/// Where something stands on a line.
enum class Alignment { Left, Center, Right };

/// The offset of what is `length` long within `room`, `margin` away from the edge that it leans on.
inline float alignedOffset(Alignment alignment, float room, float length, float margin = 0.0f) {
    switch (alignment) {
        case Alignment::Center:
            return (room - length) / 2.0f;
        case Alignment::Right:
            return room - length - margin;
        case Alignment::Left:
            break;
    }
    return margin;
}

/// Where one line of text is drawn so that its capitals stand in the middle of `room`.
inline float centredTop(Text& text, float room) {
    return (room - text.height()) / 2.0f - text.baselineOffset();
}

}  // namespace vanta::gui
