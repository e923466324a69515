#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "limiter/parameters/parameter_table.hpp"
#include "tests/cli/program.hpp"
#include "tests/plugin/preset_bytes.hpp"
#include "tests/plugin/user_home.hpp"

namespace vanta::test {
namespace {

using testing::HasSubstr;

struct PresetCommands : testing::Test {
    ProgramRun run(const std::vector<std::string>& arguments) { return runProgram(home.path, arguments); }
    std::string show(const std::string& preset) { return run({"preset", "show", preset}).out; }

    UserHome home;
    std::filesystem::path own = home / "documents/Quillmark/Vanta 2";
};

TEST_F(PresetCommands, FactoryPresetsAreThereWithoutAnyFile) {
    const std::string list = run({"presets"}).out;
    EXPECT_THAT(list, HasSubstr("Built in\n  Default Setting\n"));
    EXPECT_THAT(list, HasSubstr("\nMixing\n  Bass - Limiter 1\n"));
    EXPECT_THAT(list, HasSubstr("\n  Vocals - Up Front\n"));
    EXPECT_THAT(show("Mixing/Drum Bus - Squeeze"), HasSubstr("Bus"));
    EXPECT_EQ(show("wide AND open"), show("Wide and Open"));
    EXPECT_FALSE(std::filesystem::exists(own));
}

TEST_F(PresetCommands, ASavedPresetIsFoundByItsNameAndHidesAFactoryOne) {
    const ProgramRun saved =
        // An assignment takes one word, whatever follows.
        run({"preset", "save", "--set", "Lookahead=2 ms", "Punchy", "--preset", "Punchy", "--gain", "4.5"});
    EXPECT_EQ(saved.code, 0) << saved.err;
    EXPECT_THAT(show("Punchy"), HasSubstr("+4.50 dB"));
    EXPECT_THAT(show("Punchy"), HasSubstr("2.00 ms"));
    EXPECT_THAT(show("Basic/Punchy"), HasSubstr("0.00 ms"));
    EXPECT_THAT(run({"presets"}).out, HasSubstr("(0/0) Punchy"));

    const ProgramRun again = run({"preset", "save", "Punchy"});
    EXPECT_EQ(again.code, 1);
    EXPECT_THAT(again.err, HasSubstr("--force"));
    EXPECT_THAT(show("Punchy"), HasSubstr("+4.50 dB"));
    EXPECT_EQ(run({"preset", "save", "Punchy", "--force"}).code, 0);
    EXPECT_THAT(show("Punchy"), testing::Not(HasSubstr("+4.50 dB")));
}

TEST_F(PresetCommands, AnOlderPresetIsConverted) {
    std::vector<float> old(28, 0.0f);
    old[0] = 6.0f;
    home.write("old.qmp", presetBytes("Vn2p", 1, old));
    EXPECT_EQ(run({"preset", "convert", "old.qmp", "new.qmp"}).code, 0);
    EXPECT_EQ(std::filesystem::file_size(home / "new.qmp"), 4 * (3 + kParameterTable.size()));
    EXPECT_EQ(show("new.qmp"), show("old.qmp"));
    EXPECT_THAT(show("new.qmp"), HasSubstr("+6.00 dB"));
}

TEST_F(PresetCommands, WhatIsNoPresetIsToldWithTheNearestOne) {
    home.write("text.qmp", "no preset at all");
    struct Case {
        std::string preset;
        int code;
        std::string text;
    };
    for (const Case& c : {Case{"Punchi", 2, "did you mean Punchy?"}, Case{"gone.qmp", 1, "no such file"},
                          Case{"a/b", 1, "no such file"}, Case{"text.qmp", 1, "not a preset"},
                          Case{".", 1, "not a regular file"}}) {
        const ProgramRun shown = run({"preset", "show", c.preset});
        EXPECT_EQ(shown.code, c.code) << c.preset;
        EXPECT_THAT(shown.err, HasSubstr(c.text));
        EXPECT_EQ(shown.out, "");
    }
    EXPECT_EQ(run({"preset"}).code, 2);
    home.write("file", "");
    EXPECT_EQ(run({"preset", "save", "file/x.qmp"}).code, 1);
}

}  // namespace
}  // namespace vanta::test
