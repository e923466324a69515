#include "host/vst3/view_keys.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace vanta::vst3 {
namespace {

using Key = ViewKey::Key;

constexpr int kSpace = 7;
constexpr int kDigit0 = 24;  ///< of the keypad; the others follow
constexpr int kDigit9 = 33;
constexpr std::array kKeys{
    std::pair{1, Key::Backspace}, std::pair{2, Key::Tab},     std::pair{4, Key::Return},
    std::pair{6, Key::Escape},    std::pair{9, Key::End},     std::pair{10, Key::Home},
    std::pair{11, Key::Left},     std::pair{12, Key::Up},     std::pair{13, Key::Right},
    std::pair{14, Key::Down},     std::pair{15, Key::PageUp}, std::pair{16, Key::PageDown},
    std::pair{19, Key::Return},   std::pair{22, Key::Delete},
};

enum Modifier : int { Shift = 1, Alternate = 2, Command = 4, Control = 8 };

}  // namespace

std::optional<ViewKey> viewKeyOf(std::int16_t character, std::int16_t code, std::int16_t modifiers) {
    ViewKey key;
    key.shift = modifiers & Shift;
    key.alt = modifiers & Alternate;
    // The one of shortcuts; the other is the one with the system's sign.
    key.ctrl = modifiers & Command;
    key.meta = modifiers & Control;
    const auto* const known = std::ranges::find(kKeys, int{code}, [](const auto& row) { return row.first; });
    if (known != kKeys.end()) {
        key.key = known->second;
    } else if (code == kSpace) {
        key.character = U' ';
    } else if (code >= kDigit0 && code <= kDigit9) {
        key.character = U'0' + static_cast<char32_t>(code - kDigit0);
    } else if (code == 0 && character != 0) {
        key.character = static_cast<std::uint16_t>(character);
    } else {
        return {};
    }
    return key;
}

}  // namespace vanta::vst3
