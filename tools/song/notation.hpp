#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "tools/song/score.hpp"

namespace vanta::song {

// The small words of the notation. Each reader returns nothing for a word that is not its own.

std::vector<std::string_view> splitWords(std::string_view line);

/// A decimal number, independent of the locale.
std::optional<double> readNumber(std::string_view word);

/// A length in beats: "1.5" or "2/3".
std::optional<double> readBeats(std::string_view word);

/// "C4" is 60; "F#3", "Bb2".
std::optional<double> readPitch(std::string_view word);

/// "ppp" to "ff", as decibels below fortissimo.
std::optional<double> readDynamics(std::string_view word);

std::optional<Vowel> readVowel(std::string_view word);
std::optional<InstrumentKind> readInstrumentKind(std::string_view word);

/// One written event: "A2+E3/ah:1.5~", "r:1".
struct NoteWord {
    std::vector<double> pitches;  ///< empty: a rest
    double beats = 0;
    std::optional<Vowel> vowel;
    bool accent = false;
    bool tied = false;
};

/// Throws std::invalid_argument, whose text says what is wrong with the word.
NoteWord readNoteWord(std::string_view word);

}  // namespace vanta::song
