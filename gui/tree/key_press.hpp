#pragma once

namespace vanta::gui {

enum class Key {
    Character,
    Tab,
    Return,
    Escape,
    Backspace,
    Delete,
    Left,
    Right,
    Up,
    Down,
    PageUp,
    PageDown,
    Home,
    End,
};

struct KeyPress {
    Key key = Key::Character;
    int modifiers = 0;
    char32_t character = 0;  ///< for Key::Character: the Unicode code point
};

}  // namespace vanta::gui
