#include "tools/song/score.hpp"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tools/song/song.hpp"

namespace vanta::song {
namespace {

using testing::HasSubstr;

/// A score at 60 beats a minute, so that beats are seconds.
std::string scoreWith(const std::string& line, int bars = 1) {
    return fmt::format(
        "tempo 60\n"
        "instrument piano keys level -3 pan -0.5\n"
        "instrument drum snare\n"
        "instrument singer voice\n"
        "section a {} bars\n{}\n",
        bars, line);
}

std::vector<Note> notesOf(const std::string& line, int bars = 1) {
    return parseScore(scoreWith(line, bars)).lines.at(0).notes;
}

TEST(Score, PlacesNotesChordsAndRests) {
    const auto notes = notesOf("piano p C4+Bb4:1.5 r:1/2 f >F#3:2 | - | A4:4", 3);
    ASSERT_EQ(notes.size(), 4u);
    EXPECT_EQ(notes[0].pitch, 60);
    EXPECT_EQ(notes[1].pitch, 70);
    EXPECT_DOUBLE_EQ(notes[1].lengthSeconds, 1.5);
    EXPECT_DOUBLE_EQ(notes[2].startSeconds, 2);
    EXPECT_EQ(notes[2].pitch, 54);
    EXPECT_DOUBLE_EQ(notes[3].startSeconds, 8);
    EXPECT_EQ(notes[3].pitch, 69);
    EXPECT_GT(notes[2].strengthDb, notes[3].strengthDb) << "an accent holds for one note";
    EXPECT_GT(notes[3].strengthDb, notes[0].strengthDb) << "forte holds until the next mark";
}

TEST(Score, TiesJoinNotesAcrossBars) {
    const auto notes = notesOf("piano C4+E4:4~ | C4+E4:1~ C4+E4:1 C4+E4:2", 2);
    ASSERT_EQ(notes.size(), 4u);
    EXPECT_DOUBLE_EQ(notes[0].lengthSeconds, 6);
    EXPECT_DOUBLE_EQ(notes[1].lengthSeconds, 6);
    EXPECT_DOUBLE_EQ(notes[2].startSeconds, 6);
}

TEST(Score, VowelsHoldUntilTheNext) {
    const auto notes = notesOf("singer C4/ee:1 D4:1 E4/oo:2");
    EXPECT_EQ(notes.at(1).vowel, Vowel::ee);
    EXPECT_EQ(notes.at(2).vowel, Vowel::oo);
}

TEST(Score, StepsAreSixteenthsInAnyGrouping) {
    const auto notes = notesOf("drum x..o pp .... ..X. ...x");
    ASSERT_EQ(notes.size(), 4u);
    EXPECT_DOUBLE_EQ(notes[1].startSeconds, 0.75);
    EXPECT_LT(notes[1].strengthDb, notes[0].strengthDb);
    EXPECT_DOUBLE_EQ(notes[2].startSeconds, 2.5);
    EXPECT_GT(notes[2].strengthDb, notes[3].strengthDb);
    EXPECT_LT(notes[2].strengthDb, notes[0].strengthDb);
}

TEST(Score, SectionsFollowEachOther) {
    const auto score = parseScore(
        "title Two words\ntempo 120\nmeter 3\ntail 1.5\ninstrument p pad\n"
        "section a 2 bars # a comment\np F#4:3 | C4:3\r\nsection b 1 bar\n  p C4:3\n");
    EXPECT_EQ(score.title, "Two words");
    EXPECT_DOUBLE_EQ(score.sections.at(1).startSeconds, 3);
    EXPECT_DOUBLE_EQ(score.lines.at(1).notes.at(0).startSeconds, 3);
    EXPECT_DOUBLE_EQ(score.lengthSeconds(), 6);
    EXPECT_EQ(score.lines.at(0).notes.at(0).pitch, 66) << "a sharp is no comment";
}

struct Fault {
    std::string text;
    std::string message;
};

TEST(Score, FaultsAreNamedWithTheirLine) {
    const std::vector<Fault> faults{
        {"", "no section"},
        {"instrument a keys\nsection x 1 bar\n", "the score has no note"},
        {"instrument a keys\nsection x 1 bar\na -\n", "the score has no note"},
        {"tempo fast\n", "score:1: 'fast' is not a number"},
        {"tempo 1e2\n", "'1e2' is not a number"},
        {"tempo inf\n", "'inf' is not a number"},
        {"\ntempo 5\n", "score:2: tempo 5 is outside 20 to 400"},
        {"tempo\n", "'tempo' has no value"},
        {"tempo 90 bpm\n", "'bpm' is too much"},
        {"seed 1.5\n", "whole number"},
        {"instrument a\n", "a name and a kind"},
        {"instrument a banjo\n", "unknown kind 'banjo'"},
        {"instrument a keys\ninstrument a bass\n", "score:2: there is already an instrument 'a'"},
        {"instrument a keys loud 3\n", "unknown setting 'loud'"},
        {"instrument a keys level\n", "'level' has no value"},
        {"instrument a keys pan 2\n", "pan 2 is outside -1 to 1"},
        {"section x\n", "a section reads"},
        {"section x 0 bars\n", "outside 1 to 1000"},
        {"section x 1.5 bars\n", "whole number"},
        {"section x 1 bar\nsection x 1 bar\n", "score:2: there is already a section 'x'"},
        {"section x 999 bars\n", "longer than 600 seconds"},
        {"section x 1 bar\ntempo 90\n", "'tempo' must stand before the first section"},
        {"section x 1 bar\ninstrument a keys\n", "before the first section"},
        {"instrument a keys\na C4:4\n", "'a' plays before the first section"},
        {scoreWith("flute C4:4"), "score:6: 'flute' is neither a setting nor an instrument"},
        {scoreWith("piano C4:3"), "bar 1 has 3 beats instead of 4"},
        {scoreWith("piano C4:4 | C4:4.25", 2), "bar 2 has 4.25 beats instead of 4"},
        {scoreWith("piano C4:4", 2), "'piano' has 1 bars, the section has 2"},
        {scoreWith("piano H4:4"), "'H4' is no pitch"},
        {scoreWith("piano C9:4"), "'C9' is no pitch"},
        {scoreWith("piano C4+:4"), "'' is no pitch"},
        {scoreWith("piano C4"), "'C4' has no length"},
        {scoreWith("piano C4:1/0"), "no length above 0"},
        {scoreWith("piano C4:-4"), "no length above 0"},
        {scoreWith("piano >r:4"), "a rest has neither accent nor tie"},
        {scoreWith("piano C4:2~ D4:2"), "'D4:2' is not the tied note"},
        {scoreWith("piano C4:2~ r:2"), "'r:2' is not the tied note"},
        {scoreWith("piano C4:4~ | -", 2), "tied to a rest"},
        {scoreWith("piano C4:4~"), "tied to nothing"},
        {scoreWith("piano C4:1 -"), "'-' rests for a whole bar"},
        {scoreWith("singer C4/uh:4"), "the vowels are"},
        {scoreWith("drum x...y..........."), "'y' is no step"},
        {scoreWith("drum x..."), "bar 1 has 1 beats instead of 4"},
    };
    for (const auto& [text, message] : faults) {
        try {
            parseScore(text);
            ADD_FAILURE() << "accepted:\n" << text;
        } catch (const ScoreError& error) {
            EXPECT_THAT(error.what(), HasSubstr(message)) << text;
        }
    }
}

TEST(Score, FilesThatCannotBeReadAreNamed) {
    for (const auto& path :
         {std::filesystem::path("/no/such.score"), std::filesystem::temp_directory_path()}) {
        try {
            loadScore(path);
            ADD_FAILURE() << path;
        } catch (const ScoreError& error) {
            EXPECT_THAT(error.what(), HasSubstr(path.string() + ": cannot be read"));
        }
    }
}

TEST(Score, DemonstrationHasEveryKindOfInstrument) {
    const Score score = loadDemoScore();
    std::vector<int> played(8);
    for (const auto& line : score.lines)
        played[static_cast<std::size_t>(score.instruments[line.instrument].kind)] +=
            static_cast<int>(line.notes.size());
    EXPECT_THAT(played, testing::Each(testing::Gt(2)));
    EXPECT_NEAR(score.lengthSeconds(), 22, 3);
}

}  // namespace
}  // namespace vanta::song
