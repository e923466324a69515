#include "tools/song/notation.hpp"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <stdexcept>
#include <utility>

namespace vanta::song {
namespace {

template <typename T, std::size_t n>
using Names = std::array<std::pair<std::string_view, T>, n>;

constexpr Names<double, 7> kDynamics{
    {{"ppp", -28.0}, {"pp", -22.0}, {"p", -16.0}, {"mp", -11.0}, {"mf", -7.0}, {"f", -3.5}, {"ff", 0.0}}};
constexpr Names<Vowel, 5> kVowels{
    {{"ah", Vowel::ah}, {"eh", Vowel::eh}, {"ee", Vowel::ee}, {"oh", Vowel::oh}, {"oo", Vowel::oo}}};
constexpr Names<InstrumentKind, 8> kKinds{{{"kick", InstrumentKind::kick},
                                           {"snare", InstrumentKind::snare},
                                           {"hat", InstrumentKind::hat},
                                           {"crash", InstrumentKind::crash},
                                           {"bass", InstrumentKind::bass},
                                           {"keys", InstrumentKind::keys},
                                           {"pad", InstrumentKind::pad},
                                           {"voice", InstrumentKind::voice}}};

template <typename T, std::size_t n>
std::optional<T> find(const Names<T, n>& names, std::string_view word) {
    for (const auto& [name, value] : names)
        if (name == word) return value;
    return std::nullopt;
}

[[noreturn]] void refuse(const std::string& text) {
    throw std::invalid_argument(text);
}

std::vector<double> readChord(std::string_view chord) {
    std::vector<double> pitches;
    while (true) {
        const std::size_t end = chord.find('+');
        const std::string_view name = chord.substr(0, end);
        const auto pitch = readPitch(name);
        if (!pitch) refuse(fmt::format("'{}' is not a pitch: use C0 to B8, as in A4, F#3 or Bb2", name));
        pitches.push_back(*pitch);
        if (end == std::string_view::npos) return pitches;
        chord.remove_prefix(end + 1);
    }
}

}  // namespace

std::vector<std::string_view> splitWords(std::string_view line) {
    constexpr std::string_view kBlank = " \t\r";
    std::vector<std::string_view> words;
    for (std::size_t at = line.find_first_not_of(kBlank); at != std::string_view::npos;) {
        const std::size_t end = std::min(line.find_first_of(kBlank, at), line.size());
        words.push_back(line.substr(at, end - at));
        at = line.find_first_not_of(kBlank, end);
    }
    return words;
}

std::optional<double> readNumber(std::string_view word) {
    double value = 0;
    const auto [end, error] =
        std::from_chars(word.data(), word.data() + word.size(), value, std::chars_format::fixed);
    if (error != std::errc() || end != word.data() + word.size()) return std::nullopt;
    // "inf" and "nan" are numbers to from_chars, but to no score.
    return value - value == 0 ? std::optional(value) : std::nullopt;
}

std::optional<double> readBeats(std::string_view word) {
    const std::size_t slash = word.find('/');
    if (slash == std::string_view::npos) return readNumber(word);
    const auto over = readNumber(word.substr(0, slash));
    const auto under = readNumber(word.substr(slash + 1));
    if (!over || !under || *under == 0) return std::nullopt;
    return *over / *under;
}

std::optional<double> readPitch(std::string_view word) {
    constexpr std::array<int, 7> kSemitones{9, 11, 0, 2, 4, 5, 7};  // of A to G above C
    if (word.size() < 2 || word[0] < 'A' || word[0] > 'G') return std::nullopt;
    int semitone = kSemitones[static_cast<std::size_t>(word[0] - 'A')];
    word.remove_prefix(1);
    if (word[0] == '#' || word[0] == 'b') {
        semitone += word[0] == '#' ? 1 : -1;
        word.remove_prefix(1);
    }
    if (word.size() != 1 || word[0] < '0' || word[0] > '8') return std::nullopt;
    return 12.0 * (word[0] - '0' + 1) + semitone;
}

std::optional<double> readDynamics(std::string_view word) {
    return find(kDynamics, word);
}
std::optional<Vowel> readVowel(std::string_view word) {
    return find(kVowels, word);
}
std::optional<InstrumentKind> readInstrumentKind(std::string_view word) {
    return find(kKinds, word);
}

NoteWord readNoteWord(std::string_view word) {
    NoteWord note;
    const std::string_view whole = word;
    if (word.starts_with('>')) {
        note.accent = true;
        word.remove_prefix(1);
    }
    if (word.ends_with('~')) {
        note.tied = true;
        word.remove_suffix(1);
    }
    const std::size_t colon = word.find(':');
    if (colon == std::string_view::npos)
        refuse(fmt::format("'{}' has no length: write A4:1.5 for one and a half beats", whole));
    const auto beats = readBeats(word.substr(colon + 1));
    if (!beats || *beats <= 0)
        refuse(fmt::format(
            "'{}' has no usable length: use a number of beats above 0, or a fraction such as 2/3", whole));
    note.beats = *beats;

    std::string_view sound = word.substr(0, colon);
    if (sound == "r") {
        if (note.accent || note.tied)
            refuse(fmt::format("'{}': a rest cannot be accented or tied: write r:1", whole));
        return note;
    }
    if (const std::size_t slash = sound.find('/'); slash != std::string_view::npos) {
        note.vowel = readVowel(sound.substr(slash + 1));
        if (!note.vowel) refuse(fmt::format("unknown vowel in '{}': use ah, eh, ee, oh or oo", whole));
        sound = sound.substr(0, slash);
    }
    note.pitches = readChord(sound);
    return note;
}

}  // namespace vanta::song
