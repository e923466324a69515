#include "host/vst3/utf16.hpp"

#include <algorithm>

namespace vanta::vst3 {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool isLead(char32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}
bool isTrail(char32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

/// Takes the first character off. What continues a sequence that nothing has begun counts for itself.
char32_t takeCharacter(std::string_view& text) {
    const auto at = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned first = at(0);
    const std::size_t length = first < 0x80 ? 1 : first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    char32_t character = length < 2 ? first : first & (0x7Fu >> length);
    bool valid = length > 0 && first < 0xF5 && text.size() >= length;
    for (std::size_t i = 1; valid && i < length; ++i) {
        valid = (at(i) & 0xC0u) == 0x80u;
        character = character << 6 | (at(i) & 0x3Fu);
    }
    constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    valid = valid && character >= kSmallest[length] && character < 0x110000 && !isLead(character) &&
            !isTrail(character);
    text.remove_prefix(valid ? length : 1);
    return valid ? character : kReplacement;
}

void append(std::string& text, char32_t character) {
    const auto byte = [&](char32_t bits) { text += static_cast<char>(bits); };
    const auto tail = [&](int shift) { byte(0x80 | (character >> shift & 0x3F)); };
    if (character < 0x80) {
        byte(character);
    } else if (character < 0x800) {
        byte(0xC0 | character >> 6);
        tail(0);
    } else if (character < 0x10000) {
        byte(0xE0 | character >> 12);
        tail(6);
        tail(0);
    } else {
        byte(0xF0 | character >> 18);
        tail(12);
        tail(6);
        tail(0);
    }
}

}  // namespace

void writeUtf16(std::string_view text, std::int16_t* out, std::size_t size) {
    std::size_t used = 0;
    const auto put = [&](char32_t unit) { out[used++] = static_cast<std::int16_t>(unit); };
    while (!text.empty()) {
        const char32_t character = takeCharacter(text);
        const std::size_t units = character < 0x10000 ? 1 : 2;
        if (used + units >= size) break;
        if (units == 1) {
            put(character);
        } else {
            put(0xD800 + (character - 0x10000) / 0x400);
            put(0xDC00 + (character - 0x10000) % 0x400);
        }
    }
    std::fill(out + used, out + size, std::int16_t{0});
}

std::string readUtf16(const std::int16_t* text, std::size_t limit) {
    std::string read;
    for (std::size_t i = 0; i < limit && text[i] != 0; ++i) {
        const char32_t unit = static_cast<std::uint16_t>(text[i]);
        const char32_t next = i + 1 < limit ? static_cast<std::uint16_t>(text[i + 1]) : 0;
        if (isLead(unit) && isTrail(next)) {
            append(read, 0x10000 + (unit - 0xD800) * 0x400 + (next - 0xDC00));
            ++i;
        } else {
            append(read, isLead(unit) || isTrail(unit) ? kReplacement : unit);
        }
    }
    return read;
}

}  // namespace vanta::vst3
