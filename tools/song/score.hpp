#pragma once

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace vanta::song {

/// A fault in a score. `what()` reads "file:line: what is wrong".
class ScoreError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

enum class InstrumentKind { kick, snare, hat, crash, bass, keys, pad, voice };
enum class Vowel { ah, eh, ee, oh, oo };

/// Unpitched instruments are written as grids of steps, all others as notes.
bool isPercussion(InstrumentKind kind);

struct Note {
    double startSeconds = 0;
    double lengthSeconds = 0;
    double pitch = 60;      ///< semitones, middle C is 60, A4 (440 Hz) is 69; unused by percussion
    double strengthDb = 0;  ///< 0 is fortissimo
    Vowel vowel = Vowel::ah;
};

/// One instrument and its strip in the mix.
struct InstrumentSpec {
    std::string name;
    InstrumentKind kind = InstrumentKind::keys;
    double levelDb = 0;
    double pan = 0;        ///< -1 left to 1 right
    double width = 1;      ///< 0 mono, 1 as the instrument plays, 2 widest
    double spaceDb = -20;  ///< send to the reverberation; -60 or less means none
    double lowCutHz = 20;
    double decaySeconds = 0;  ///< 0: the instrument's own
};

/// What one instrument plays in one section, in order of time.
struct Line {
    std::size_t instrument = 0;
    std::vector<Note> notes;
};

struct Section {
    std::string name;
    double startSeconds = 0;
    double endSeconds = 0;
};

struct Score {
    std::string title;
    double tempo = 120;      ///< quarter notes per minute
    double beatsPerBar = 4;  ///< quarter notes
    std::uint64_t seed = 1;  ///< of every random choice that the instruments make
    double masterDb = 0;
    double tailSeconds = 0;  ///< what rings on after the last bar
    std::vector<InstrumentSpec> instruments;
    std::vector<Section> sections;
    std::vector<Line> lines;

    double lengthSeconds() const;
};

/// Reads the notation that resources/demo/song.score explains at its top. `fileName` is for messages.
/// Throws ScoreError.
Score parseScore(std::string_view text, const std::string& fileName = "score");

/// Throws ScoreError, also for a file that cannot be read.
Score loadScore(const std::filesystem::path& path);

}  // namespace vanta::song
