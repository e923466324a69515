#include "foundation/printable.hpp"

#include <algorithm>

namespace vanta {

namespace {

constexpr bool isControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

}  // namespace

std::string printable(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string shown;
    for (const char c : text) {
        if (!isControl(c)) {
            shown += c;
        } else if (c == '\n') {
            shown += "\\n";
        } else {
            const auto code = static_cast<unsigned char>(c);
            shown += {'\\', 'x', kDigits[code / 16], kDigits[code % 16]};
        }
    }
    return shown;
}

}  // namespace vanta
