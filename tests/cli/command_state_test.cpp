#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

#include <bit>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "limiter/model/vanta_plugin.hpp"
#include "plugin/model/session_state.hpp"
#include "tests/cli/program.hpp"
#include "tests/plugin/user_home.hpp"
#include "tests/support/sound_files.hpp"

namespace vanta::test {
namespace {

using testing::HasSubstr;

class StateCommands : public testing::Test {
protected:
    ProgramRun run(const std::string& command) const { return runProgram(home.path, words(command)); }
    void expectDone(const std::string& command) const { EXPECT_EQ(run(command).code, 0) << command; }
    std::filesystem::path file(const std::string& name) const { return home / name; }
    nlohmann::json shown(const std::string& name) const {
        return nlohmann::json::parse(run("state show " + name + " --json").out);
    }

    /// An instance with odd values everywhere, and others in the slot that is not in use.
    static void setUp(VantaPlugin& plugin, const std::string& preset = "Mine") {
        plugin.interfaceOpened();
        set(plugin, 0.3f);
        plugin.toggleCompare();
        set(plugin, 0.8f);
        plugin.setPresetName(preset);
    }
    static void set(VantaPlugin& plugin, float share) {
        for (int i = 0; i < plugin.parameterCount(); ++i) {
            AbstractPluginParameter& parameter = *plugin.parameterAt(i);
            parameter.setValue(parameter.denormalize(share + 0.003f * static_cast<float>(i)), 0);
        }
    }
    void write(const std::string& name, VantaPlugin& plugin) const {
        const auto bytes = writeSessionState(plugin);
        writeBytes(file(name), {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    }

    UserHome home;
};

TEST_F(StateCommands, KeepWhatTheyDoNotChangeBitForBit) {
    VantaPlugin plugin(kStereoLayout);
    setUp(plugin);
    write("session", plugin);
    expectDone("state save same --state session");
    EXPECT_EQ(readBytes(file("same")), readBytes(file("session")));

    expectDone("state save session --state session --gain 7.25 --force");
    VantaPlugin changed(kStereoLayout);
    const std::string bytes = readBytes(file("session"));
    ASSERT_TRUE(readSessionState(changed, std::as_bytes(std::span(bytes))));
    EXPECT_EQ(changed.gain.value(), 7.25f);
    changed.gain.setValue(plugin.gain.value(), 0);
    EXPECT_EQ(changed.parameterValues(), plugin.parameterValues());
    EXPECT_EQ(changed.compareStates().current(), plugin.compareStates().current());
    EXPECT_EQ(changed.compareStates().state(0).values, plugin.compareStates().state(0).values);
    EXPECT_EQ(changed.presetState().values().name, "Mine");
}

TEST_F(StateCommands, ARenderFromAStateIsTheRenderOfItsSettings) {
    const Channels noise = {pinkNoise(1, 30000, 0.2), pinkNoise(2, 30000, 0.2)};
    writeSound(file("in.wav"), noise, SF_FORMAT_WAV | SF_FORMAT_PCM_24, 44100);
    const std::string settings = " --preset Punchy --style Bus --gain 9.5 --set Attack=12";
    expectDone("state save session" + settings);
    expectDone("render in.wav plain.wav" + settings);
    expectDone("render in.wav recalled.wav --state session");
    EXPECT_EQ(readIntegers(file("recalled.wav")), readIntegers(file("plain.wav")));
    // Options change what was recalled.
    expectDone("render in.wav louder.wav --state session --gain 12");
    EXPECT_NE(readIntegers(file("louder.wav")), readIntegers(file("plain.wav")));
    // A command reads and writes nothing of what belongs to the plug-ins.
    EXPECT_FALSE(std::filesystem::exists(file("documents/Quillmark")));
}

TEST_F(StateCommands, JsonHasEveryValueOfBothSlotsToItsLastBit) {
    VantaPlugin plugin(kStereoLayout);
    setUp(plugin, "Caf\xe9 \"x\"");  // Latin-1, as an old host may have stored it
    write("session", plugin);
    const auto json = shown("session");
    EXPECT_TRUE(json["preset"]["modified"].get<bool>());
    EXPECT_EQ(json["compare"]["current"], "B");
    EXPECT_EQ(json["parameters"], json["compare"]["B"]["parameters"]);
    for (const int slot : {0, 1}) {
        const State state = plugin.compareStates().contents().slots[static_cast<std::size_t>(slot)];
        const auto& parameters = json["compare"][slot == 0 ? "A" : "B"]["parameters"];
        ASSERT_EQ(parameters.size(), 31u);
        for (int i = 0; i < plugin.parameterCount(); ++i) {
            const auto value = parameters[plugin.parameterAt(i)->name()]["value"].get<float>();
            EXPECT_EQ(std::bit_cast<std::uint32_t>(value),
                      std::bit_cast<std::uint32_t>(state.values[static_cast<std::size_t>(i)]));
        }
    }
}

TEST_F(StateCommands, EachSlotIsShownInItsOwnWordsAndUnderItsOwnPreset) {
    VantaPlugin plugin(kStereoLayout);
    plugin.interfaceOpened();
    plugin.outputLevel.setValue(-3.0f, 0);
    plugin.setPresetName("A name that is longer than the columns of a table use to be wide");
    plugin.toggleCompare();
    plugin.truePeakLimiting.setMapped(false);
    plugin.outputLevel.setValue(-2.0f, 0);
    write("session", plugin);
    const std::string table = run("state show session").out;
    for (const char* row : {"Compare +A +B \\(current\\)\n", "Output Level +-3.00 dBTP +-2.00 dB\n",
                            "Preset +A name that is longer .* \\(modified\\) +none\n"})
        EXPECT_THAT(table, testing::ContainsRegex(row));
}

TEST_F(StateCommands, APresetIsNamedAsMenusShowIt) {
    EXPECT_EQ(runProgram(home.path, {"preset", "save", "Mine v1.2", "--gain", "2"}).code, 0);
    using Preset = std::pair<std::string, bool>;
    const auto presetOf = [this](std::vector<std::string> settings) {
        settings.insert(settings.begin(), {"state", "save", "session", "--force"});
        EXPECT_EQ(runProgram(home.path, settings).code, 0);
        const auto preset = shown("session")["preset"];
        return Preset(preset["name"].get<std::string>(), preset["modified"].get<bool>());
    };
    EXPECT_EQ(presetOf({}), Preset("", false));
    EXPECT_EQ(presetOf({"--preset", "basic/punchy"}), Preset("Punchy", false));
    EXPECT_EQ(presetOf({"--state", "session"}), Preset("Punchy", false));
    EXPECT_EQ(presetOf({"--state", "session", "--gain", "3"}), Preset("Punchy", true));
    EXPECT_EQ(presetOf({"--state", "session", "--preset", "mine V1.2"}), Preset("Mine v1.2", false));
    EXPECT_EQ(presetOf({"--preset", file("documents/Quillmark/Vanta 2/Mine v1.2.qmp"), "--set", "Gain=4"}),
              Preset("Mine v1.2", true));
}

TEST_F(StateCommands, BadFilesAreNamedAndNothingIsLost) {
    VantaPlugin plugin(kStereoLayout);
    setUp(plugin);
    write("session", plugin);
    const std::string whole = readBytes(file("session"));
    writeBytes(file("cut"), whole.substr(0, whole.size() / 2));
    writeBytes(file("foreign"), "Vn2p and so on");
    writeSound(file("in.wav"), {Signal(1000, 0.1f)}, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 44100);
    for (const std::string name : {"cut", "foreign", "missing", "documents"}) {
        for (const std::string command : {"state show ", "render in.wav out.wav --state "}) {
            const ProgramRun result = run(command + name);
            EXPECT_EQ(result.code, 1) << name;
            EXPECT_THAT(result.err, HasSubstr(name + ": "));
        }
    }
    EXPECT_FALSE(std::filesystem::exists(file("out.wav")));
    EXPECT_THAT(run("state save session").err, HasSubstr("use --force"));
    EXPECT_EQ(run("render in.wav session --state session --format wav --force").code, 1);
    EXPECT_EQ(readBytes(file("session")), whole);
}

}  // namespace
}  // namespace vanta::test
