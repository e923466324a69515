#include "tools/song/score.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <span>

#include "foundation/whole_file.hpp"
#include "tools/song/notation.hpp"

namespace vanta::song {
namespace {

constexpr double kAccentDb = 3;
constexpr double kGhostDb = -9;
constexpr double kBeatTolerance = 1e-6;  // what thirds and sixths of a beat may miss a bar by
constexpr double kLongestSeconds = 600;

using Words = std::span<const std::string_view>;

class ScoreParser {
public:
    explicit ScoreParser(const std::string& name) : fileName_(name) {}

    Score parse(std::string_view text);

private:
    struct Setting {
        std::string_view name;
        double Score::*field;
        double lowest, highest;
    };
    struct StripSetting {
        std::string_view name;
        double InstrumentSpec::*field;
        double lowest, highest;
    };
    /// The notes of a line while it is read.
    struct Pen {
        Line line;
        double startBeats = 0;  ///< of the section
        double bar = 0;         ///< bars that are complete
        double beats = 0;       ///< within the bar
        double strengthDb = -7;
        Vowel vowel = Vowel::ah;
        bool tied = false;
        std::vector<double> lastPitches;
    };

    [[noreturn]] void fail(const std::string& what) const {
        throw ScoreError(fmt::format("{}:{}: {}", fileName_, lineNumber_, what));
    }
    double number(std::string_view word, std::string_view what, double lowest, double highest) const;
    double secondsAt(double beats) const { return beats * 60 / score_.tempo; }

    void readLine(std::string_view line);
    bool readSetting(Words words);
    void readInstrument(Words words);
    void readSection(Words words);
    void readPlayedLine(Words words);
    void readWord(Pen& pen, std::string_view word, bool percussion);
    void readSteps(Pen& pen, std::string_view steps, double beatsPerStep);
    void readNote(Pen& pen, std::string_view word);
    void closeBar(Pen& pen);
    void finish() const;

    const std::string& fileName_;
    int lineNumber_ = 0;
    int sectionBars_ = 0;
    double sectionBeats_ = 0;  ///< where the section begins
    Score score_;
};

double ScoreParser::number(std::string_view word, std::string_view what, double lowest,
                           double highest) const {
    const auto value = readNumber(word);
    if (!value)
        fail(fmt::format("{} cannot be '{}': use a number from {} to {}", what, word, lowest, highest));
    if (*value < lowest || *value > highest)
        fail(fmt::format("{} cannot be {}: use {} to {}", what, word, lowest, highest));
    return *value;
}

Score ScoreParser::parse(std::string_view text) {
    while (!text.empty()) {
        ++lineNumber_;
        const std::size_t end = std::min(text.find('\n'), text.size());
        readLine(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    finish();
    return std::move(score_);
}

void ScoreParser::finish() const {
    if (score_.sections.empty()) fail("the score has no sections: add 'section NAME COUNT bars'");
    const bool silent =
        std::all_of(score_.lines.begin(), score_.lines.end(), [](const Line& l) { return l.notes.empty(); });
    if (silent) fail("the score has no notes: add a line for an instrument");
}

void ScoreParser::readLine(std::string_view line) {
    // A '#' after a letter sharpens a note; a comment is at the start or after a blank.
    for (std::size_t at = line.find('#'); at != std::string_view::npos; at = line.find('#', at + 1)) {
        if (at > 0 && line[at - 1] != ' ' && line[at - 1] != '\t') continue;
        line = line.substr(0, at);
        break;
    }
    const auto words = splitWords(line);
    if (words.empty() || readSetting(words)) return;
    if (words[0] == "instrument") return readInstrument(words);
    if (words[0] == "section") return readSection(words);
    readPlayedLine(words);
}

bool ScoreParser::readSetting(Words words) {
    static constexpr std::array<Setting, 4> kSettings{{{"tempo", &Score::tempo, 20, 400},
                                                       {"meter", &Score::beatsPerBar, 1, 16},
                                                       {"master", &Score::masterDb, -60, 20},
                                                       {"tail", &Score::tailSeconds, 0, 60}}};
    const bool title = words[0] == "title";
    const bool seed = words[0] == "seed";
    const auto* setting = std::find_if(kSettings.begin(), kSettings.end(),
                                       [&](const Setting& s) { return s.name == words[0]; });
    if (!title && !seed && setting == kSettings.end()) return false;
    // Later settings would move notes that are already placed.
    if (!score_.sections.empty())
        fail(fmt::format("'{}' comes too late: write it before the first section", words[0]));
    if (words.size() < 2) fail(fmt::format("'{}' needs a value", words[0]));
    if (title) {
        score_.title = fmt::format("{}", fmt::join(words.subspan(1), " "));
        return true;
    }
    if (words.size() > 2) fail(fmt::format("'{}' takes one value: remove '{}'", words[0], words[2]));
    if (seed) {
        const double value = number(words[1], "seed", 0, 1e15);
        if (value != std::floor(value)) fail("the seed must be a whole number");
        score_.seed = static_cast<std::uint64_t>(value);
    } else {
        score_.*setting->field = number(words[1], words[0], setting->lowest, setting->highest);
    }
    return true;
}

void ScoreParser::readInstrument(Words words) {
    static constexpr std::array<StripSetting, 6> kStrip{
        {{"level", &InstrumentSpec::levelDb, -60, 20},
         {"pan", &InstrumentSpec::pan, -1, 1},
         {"width", &InstrumentSpec::width, 0, 2},
         {"space", &InstrumentSpec::spaceDb, -60, 6},
         {"lowcut", &InstrumentSpec::lowCutHz, 10, 2000},
         {"decay", &InstrumentSpec::decaySeconds, 0.005, 10}}};
    if (words.size() < 3) fail("an instrument needs a name and a kind: write 'instrument NAME KIND'");
    if (!score_.sections.empty()) fail("'instrument' comes too late: write it before the first section");
    InstrumentSpec spec;
    spec.name = words[1];
    for (const auto& other : score_.instruments)
        if (other.name == spec.name)
            fail(fmt::format("there is already an instrument '{}': choose another name", spec.name));
    const auto kind = readInstrumentKind(words[2]);
    if (!kind)
        fail(fmt::format("unknown kind '{}': use kick, snare, hat, crash, bass, keys, pad or voice",
                         words[2]));
    spec.kind = *kind;
    for (Words rest = words.subspan(3); !rest.empty(); rest = rest.subspan(2)) {
        const auto* setting = std::find_if(kStrip.begin(), kStrip.end(),
                                           [&](const StripSetting& s) { return s.name == rest[0]; });
        if (setting == kStrip.end())
            fail(fmt::format("unknown setting '{}': use level, pan, width, space, lowcut or decay", rest[0]));
        if (rest.size() < 2) fail(fmt::format("'{}' needs a value", rest[0]));
        spec.*setting->field = number(rest[1], rest[0], setting->lowest, setting->highest);
    }
    score_.instruments.push_back(std::move(spec));
}

void ScoreParser::readSection(Words words) {
    if (words.size() != 4 || (words[3] != "bars" && words[3] != "bar"))
        fail("cannot read the section: write 'section NAME COUNT bars'");
    const double bars = number(words[2], "the number of bars", 1, 1000);
    if (bars != std::floor(bars)) fail("the number of bars must be a whole number");
    for (const auto& other : score_.sections)
        if (other.name == words[1])
            fail(fmt::format("there is already a section '{}': choose another name", words[1]));
    sectionBeats_ += sectionBars_ * score_.beatsPerBar;
    sectionBars_ = static_cast<int>(bars);
    const double end = secondsAt(sectionBeats_ + bars * score_.beatsPerBar);
    if (end > kLongestSeconds)
        fail(fmt::format("the score is too long: it may last {} seconds", kLongestSeconds));
    score_.sections.push_back({std::string(words[1]), secondsAt(sectionBeats_), end});
}

void ScoreParser::readPlayedLine(Words words) {
    const auto instrument = std::find_if(score_.instruments.begin(), score_.instruments.end(),
                                         [&](const InstrumentSpec& spec) { return spec.name == words[0]; });
    if (instrument == score_.instruments.end())
        fail(fmt::format(
            "unknown word '{}': use a setting, 'instrument', 'section' or the name of an instrument",
            words[0]));
    if (score_.sections.empty())
        fail(fmt::format("'{}' plays before the first section: write a section first", words[0]));

    Pen pen;
    pen.startBeats = sectionBeats_;
    pen.line.instrument = static_cast<std::size_t>(instrument - score_.instruments.begin());
    const bool percussion = isPercussion(instrument->kind);
    for (const auto word : words.subspan(1)) readWord(pen, word, percussion);
    closeBar(pen);
    if (pen.tied) fail("the last note is tied to nothing: remove its '~'");
    if (pen.bar != sectionBars_)
        fail(fmt::format("'{}' has {} bars, but the section has {}", words[0], pen.bar, sectionBars_));
    score_.lines.push_back(std::move(pen.line));
}

void ScoreParser::readWord(Pen& pen, std::string_view word, bool percussion) {
    if (word == "|") return closeBar(pen);
    if (const auto dynamics = readDynamics(word)) {
        pen.strengthDb = *dynamics;
    } else if (word == "-") {
        if (pen.beats > 0) fail("'-' rests for a whole bar: use it alone, or r:1 for a beat");
        if (pen.tied) fail("a note is tied to a rest: remove its '~'");
        pen.beats = score_.beatsPerBar;
    } else if (percussion) {
        readSteps(pen, word, 0.25);
    } else {
        readNote(pen, word);
    }
}

void ScoreParser::readSteps(Pen& pen, std::string_view steps, double beatsPerStep) {
    for (const char step : steps) {
        const double startBeats = pen.startBeats + pen.bar * score_.beatsPerBar + pen.beats;
        Note note{secondsAt(startBeats), secondsAt(beatsPerStep), 0, pen.strengthDb, Vowel::ah};
        pen.beats += beatsPerStep;
        if (step == '.') continue;
        if (step == 'X')
            note.strengthDb += kAccentDb;
        else if (step == 'o')
            note.strengthDb += kGhostDb;
        else if (step != 'x')
            fail(fmt::format("unknown step '{}': use . to rest, o for soft, x for normal or X for accented",
                             step));
        pen.line.notes.push_back(note);
    }
}

void ScoreParser::readNote(Pen& pen, std::string_view word) {
    NoteWord note;
    try {
        note = readNoteWord(word);
    } catch (const std::invalid_argument& error) {
        fail(error.what());
    }
    const double startBeats = pen.startBeats + pen.bar * score_.beatsPerBar + pen.beats;
    pen.beats += note.beats;
    if (pen.tied && note.pitches != pen.lastPitches)
        fail(fmt::format("'{}' has other pitches than the note tied to it: write the same or remove the '~'",
                         word));
    if (note.vowel) pen.vowel = *note.vowel;
    if (pen.tied) {
        const auto count = static_cast<std::ptrdiff_t>(note.pitches.size());
        for (auto last = pen.line.notes.end() - count; last != pen.line.notes.end(); ++last)
            last->lengthSeconds += secondsAt(note.beats);
    } else {
        const double strengthDb = pen.strengthDb + (note.accent ? kAccentDb : 0);
        for (const double pitch : note.pitches)
            pen.line.notes.push_back(
                {secondsAt(startBeats), secondsAt(note.beats), pitch, strengthDb, pen.vowel});
    }
    pen.tied = note.tied;
    pen.lastPitches = std::move(note.pitches);
}

void ScoreParser::closeBar(Pen& pen) {
    if (std::abs(pen.beats - score_.beatsPerBar) > kBeatTolerance)
        fail(fmt::format("bar {} has {} beats instead of {}", pen.bar + 1, pen.beats, score_.beatsPerBar));
    pen.bar += 1;
    pen.beats = 0;
}

}  // namespace

bool isPercussion(InstrumentKind kind) {
    return kind == InstrumentKind::kick || kind == InstrumentKind::snare || kind == InstrumentKind::hat ||
           kind == InstrumentKind::crash;
}

double Score::lengthSeconds() const {
    return (sections.empty() ? 0 : sections.back().endSeconds) + tailSeconds;
}

Score parseScore(std::string_view text, const std::string& fileName) {
    return ScoreParser(fileName).parse(text);
}

Score loadScore(const std::filesystem::path& path) {
    return parseScore(readWholeFile(path), path.filename().string());
}

}  // namespace vanta::song
