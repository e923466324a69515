#include "gui/x11/x11_keys.hpp"

#include <array>
#include <string_view>

#include "gui/tree/modifiers.hpp"
#include "gui/x11/pointer_event.hpp"

namespace vanta::gui {
namespace {

struct NamedKey {
    KeySym symbol;
    Key key;
};

constexpr NamedKey kNamedKeys[] = {
    {XK_Tab, Key::Tab},
    {XK_ISO_Left_Tab, Key::Tab},
    {XK_KP_Tab, Key::Tab},
    {XK_Return, Key::Return},
    {XK_KP_Enter, Key::Return},
    {XK_Escape, Key::Escape},
    {XK_BackSpace, Key::Backspace},
    {XK_Delete, Key::Delete},
    {XK_KP_Delete, Key::Delete},
    {XK_Left, Key::Left},
    {XK_KP_Left, Key::Left},
    {XK_Right, Key::Right},
    {XK_KP_Right, Key::Right},
    {XK_Up, Key::Up},
    {XK_KP_Up, Key::Up},
    {XK_Down, Key::Down},
    {XK_KP_Down, Key::Down},
    {XK_Page_Up, Key::PageUp},
    {XK_KP_Page_Up, Key::PageUp},
    {XK_Page_Down, Key::PageDown},
    {XK_KP_Page_Down, Key::PageDown},
    {XK_Home, Key::Home},
    {XK_KP_Home, Key::Home},
    {XK_End, Key::End},
    {XK_KP_End, Key::End},
};

/// Symbols of Unicode bear its code below this bit; those of Latin-1 are the code itself.
constexpr KeySym kUnicodeSymbol = 0x01000000;

char32_t characterOf(KeySym symbol) {
    if ((symbol & 0xFF000000u) == kUnicodeSymbol) return static_cast<char32_t>(symbol & 0xFFFFFFu);
    return symbol < 0x100 ? static_cast<char32_t>(symbol) : 0;
}

/// The next code point of valid UTF-8, which is taken off.
char32_t takeCharacter(std::string_view& text) {
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    char32_t character = length == 1 ? first : first & (0x7Fu >> length);
    for (std::size_t i = 1; i < length && i < text.size(); ++i) {
        character = character << 6 | (static_cast<unsigned char>(text[i]) & 0x3Fu);
    }
    text.remove_prefix(std::min(length, text.size()));
    return character;
}

bool isPrintable(char32_t character) {
    return character >= 0x20 && (character < 0x7F || character >= 0xA0);
}

}  // namespace

X11Keys::X11Keys(X11Display& display)
    : display_(display), method_(XOpenIM(display.get(), nullptr, nullptr, nullptr)) {}

X11Keys::~X11Keys() {
    setWindow(kNoXid);
    if (method_) XCloseIM(method_);
}

void X11Keys::setWindow(Window window) {
    if (context_) XDestroyIC(context_);
    context_ = nullptr;
    if (!method_ || window == kNoXid) return;
    context_ = XCreateIC(method_, XNInputStyle, XIMPreeditNothing | XIMStatusNothing, XNClientWindow, window,
                         XNFocusWindow, window, static_cast<void*>(nullptr));
    if (context_) XSetICFocus(context_);
}

std::vector<KeyPress> X11Keys::read(XKeyEvent& event) {
    std::array<char, 128> buffer{};
    KeySym symbol = NoSymbol;
    int length = 0;
    if (context_ && event.type == kKeyPressEvent) {
        int status = 0;
        length = Xutf8LookupString(context_, &event, buffer.data(), static_cast<int>(buffer.size()), &symbol,
                                   &status);
        if (status != XLookupChars && status != XLookupBoth) length = 0;
    } else {
        XLookupString(&event, nullptr, 0, &symbol, nullptr);
    }
    const int modifiers = toModifiers(event.state);
    for (const NamedKey& named : kNamedKeys) {
        if (named.symbol == symbol) return {{named.key, modifiers, 0}};
    }
    constexpr int kCommand = modifier::kCtrl | modifier::kAlt | modifier::kMeta;
    if (length == 0 || (modifiers & kCommand)) {
        // With Ctrl the text would be a control character.
        const char32_t character = characterOf(symbol);
        if (!isPrintable(character)) return {};
        return {{Key::Character, modifiers, character}};
    }
    std::vector<KeyPress> keys;
    std::string_view text(buffer.data(), static_cast<std::size_t>(length));
    while (!text.empty()) {
        const char32_t character = takeCharacter(text);
        if (isPrintable(character)) keys.push_back({Key::Character, modifiers, character});
    }
    return keys;
}

}  // namespace vanta::gui
