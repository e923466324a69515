#include "plugin/parameters/note_name.hpp"

#include <charconv>
#include <cmath>

#include "plugin/parameters/number_text.hpp"

namespace vanta {
namespace {

/// Takes a letter off the front. Result: its semitones above C.
std::optional<int> takeLetter(std::string_view& text) {
    constexpr std::string_view kKeyboard = "C.D.EF.G.A.Bc.d.ef.g.a.b";
    if (text.empty() || text[0] == '.') return {};
    const std::size_t key = kKeyboard.find(text[0]);
    if (key == std::string_view::npos) return {};
    text.remove_prefix(1);
    return static_cast<int>(key % 12);
}

/// Takes "#" or "b" off the front. Result: by how many semitones it moves the note.
int takeAccidental(std::string_view& text) {
    if (text.empty()) return 0;
    const int semitones = text[0] == '#' ? 1 : text[0] == 'b' || text[0] == 'B' ? -1 : 0;
    if (semitones) text.remove_prefix(1);
    return semitones;
}

/// Takes a whole number off the front, 4 if there is none.
std::optional<int> takeOctave(std::string_view& text) {
    int octave = 4;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), octave);
    if (error == std::errc::result_out_of_range) return {};
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return octave;
}

double takeCents(std::string_view& text) {
    text = skipBlanks(text);
    const auto number = readNumber(text);
    if (!number) return 0.0;
    text = skipBlanks(text.substr(number->length));
    return number->value;
}

}  // namespace

std::optional<float> hertzOfNote(std::string_view text) {
    text = skipBlanks(text);
    const auto letter = takeLetter(text);
    if (!letter) return {};
    const int semitone = *letter + takeAccidental(text);
    const auto octave = takeOctave(text);
    if (!octave) return {};
    const double cents = takeCents(text);
    if (!text.empty()) return {};
    const double semitonesAboveA4 = (*octave + 1.0) * 12.0 + semitone + cents / 100.0 - 69.0;
    return static_cast<float>(std::exp2(std::log2(440.0) + semitonesAboveA4 / 12.0));
}

}  // namespace vanta
