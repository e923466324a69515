#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

#include <bit>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "limiter/vanta_plugin.hpp"
#include "plugin/model/session_state.hpp"
#include "tests/app/program.hpp"
#include "tests/app/sound_files.hpp"
#include "tests/plugin/user_home.hpp"

namespace vanta {
namespace {

using test::ProgramRun;
using test::readBytes;
using test::UserHome;
using testing::HasSubstr;

class StateCommands : public testing::Test {
protected:
    ProgramRun run(const std::vector<std::string>& arguments) const {
        return test::runProgram(home.folder.path(), arguments);
    }
    std::filesystem::path file(const std::string& name) const { return home.folder.file(name); }

    /// An instance with odd values everywhere, and others in the slot that is not in use.
    static void setUp(VantaPlugin& plugin) {
        plugin.interfaceOpened();
        set(plugin, 0.3f);
        plugin.toggleCompare();
        set(plugin, 0.8f);
        plugin.setPresetName("Mine");
    }
    static void set(VantaPlugin& plugin, float share) {
        for (int i = 0; i < plugin.parameterCount(); ++i) {
            AbstractPluginParameter& parameter = *plugin.parameterAt(i);
            parameter.setValue(parameter.denormalize(share + 0.003f * static_cast<float>(i)), 0);
        }
    }
    void write(const std::string& name, VantaPlugin& plugin) const {
        const auto bytes = writeSessionState(plugin);
        test::writeBytes(file(name), {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    }
    bool read(const std::string& name, VantaPlugin& plugin) const {
        const std::string bytes = readBytes(file(name));
        return readSessionState(plugin, std::as_bytes(std::span(bytes)));
    }

    UserHome home;
};

TEST_F(StateCommands, KeepWhatTheyDoNotChangeBitForBit) {
    VantaPlugin plugin(kStereoLayout);
    setUp(plugin);
    write("session", plugin);
    ASSERT_EQ(run({"state", "save", "same", "--state", "session"}).code, 0);
    EXPECT_EQ(readBytes(file("same")), readBytes(file("session")));

    ASSERT_EQ(run({"state", "save", "session", "--state", "session", "--gain", "7.25", "--force"}).code, 0);
    VantaPlugin changed(kStereoLayout);
    ASSERT_TRUE(read("session", changed));
    EXPECT_EQ(changed.gain.value(), 7.25f);
    for (int i = 1; i < plugin.parameterCount(); ++i) {
        EXPECT_EQ(std::bit_cast<std::uint32_t>(changed.parameterAt(i)->value()),
                  std::bit_cast<std::uint32_t>(plugin.parameterAt(i)->value()))
            << plugin.parameterAt(i)->name();
    }
    EXPECT_EQ(changed.compareStates().current(), plugin.compareStates().current());
    EXPECT_EQ(changed.compareStates().state(0).values, plugin.compareStates().state(0).values);
    EXPECT_EQ(changed.presetState().values().name, "Mine");

    const std::string shown = run({"state", "show", "session"}).out;
    EXPECT_THAT(shown, testing::ContainsRegex("Compare +A +B \\(current\\)\n"));
    EXPECT_THAT(shown, testing::ContainsRegex("Gain +\\+9.00 dB +\\+7.25 dB\n"));
}

TEST_F(StateCommands, ARenderFromAStateIsTheRenderOfItsSettings) {
    const test::Channels noise = {test::pinkNoise(1, 30000, 0.2), test::pinkNoise(2, 30000, 0.2)};
    test::writeSound(file("in.wav"), noise, SF_FORMAT_WAV | SF_FORMAT_PCM_24, 44100);
    const std::vector<std::string> settings = {"--style", "Bus", "--gain", "9.5", "--set", "Attack=12 ms"};
    std::vector<std::string> save = {"state", "save", "session", "--preset", "Punchy"};
    save.insert(save.end(), settings.begin(), settings.end());
    ASSERT_EQ(run(save).code, 0);
    EXPECT_THAT(run({"state", "show", "session"}).out, HasSubstr("Punchy (modified)"));

    std::vector<std::string> plain = {"render", "in.wav", "plain.wav", "--preset", "Punchy"};
    plain.insert(plain.end(), settings.begin(), settings.end());
    ASSERT_EQ(run(plain).code, 0);
    ASSERT_EQ(run({"render", "in.wav", "recalled.wav", "--state", "session"}).code, 0);
    EXPECT_EQ(test::readIntegers(file("recalled.wav")), test::readIntegers(file("plain.wav")));
    // Options change what was recalled.
    ASSERT_EQ(run({"render", "in.wav", "louder.wav", "--state", "session", "--gain", "12"}).code, 0);
    EXPECT_NE(test::readIntegers(file("louder.wav")), test::readIntegers(file("plain.wav")));
    // A command reads and writes nothing of what belongs to the plug-ins.
    EXPECT_FALSE(std::filesystem::exists(file("documents/Quillmark")));
}

TEST_F(StateCommands, JsonHasEveryValueOfBothSlotsToItsLastBit) {
    VantaPlugin plugin(kStereoLayout);
    setUp(plugin);
    plugin.setPresetName("Caf\xe9 \"x\"");  // Latin-1, as an old host may have stored it
    write("session", plugin);
    const auto json = nlohmann::json::parse(run({"state", "show", "session", "--json"}).out);
    EXPECT_TRUE(json["preset"]["modified"].get<bool>());
    EXPECT_EQ(json["compare"]["current"], "B");
    for (const int slot : {0, 1}) {
        const State state = plugin.compareStates().contents().slots[static_cast<std::size_t>(slot)];
        const auto& parameters = json["compare"][slot == 0 ? "A" : "B"]["parameters"];
        ASSERT_EQ(parameters.size(), 31u);
        for (int i = 0; i < plugin.parameterCount(); ++i) {
            EXPECT_EQ(
                std::bit_cast<std::uint32_t>(parameters[plugin.parameterAt(i)->name()]["value"].get<float>()),
                std::bit_cast<std::uint32_t>(state.values[static_cast<std::size_t>(i)]));
        }
    }
    EXPECT_EQ(json["parameters"], json["compare"]["B"]["parameters"]);
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
    const std::string shown = run({"state", "show", "session"}).out;
    EXPECT_THAT(shown, testing::ContainsRegex("Output Level +-3.00 dBTP +-2.00 dB\n"));
    EXPECT_THAT(shown, testing::ContainsRegex("Preset +A name that is longer .* \\(modified\\) +none\n"));
}

TEST_F(StateCommands, APresetIsNamedAsMenusShowIt) {
    const auto presetOf = [this](const std::vector<std::string>& settings) {
        std::vector<std::string> save = {"state", "save", "session", "--force"};
        save.insert(save.end(), settings.begin(), settings.end());
        EXPECT_EQ(run(save).code, 0);
        return nlohmann::json::parse(run({"state", "show", "session", "--json"}).out)["preset"].dump();
    };
    EXPECT_EQ(presetOf({}), R"({"modified":false,"name":""})");
    EXPECT_EQ(presetOf({"--preset", "basic/punchy"}), R"({"modified":false,"name":"Punchy"})");
    EXPECT_EQ(presetOf({"--state", "session"}), R"({"modified":false,"name":"Punchy"})");
    EXPECT_EQ(presetOf({"--state", "session", "--gain", "3"}), R"({"modified":true,"name":"Punchy"})");
    ASSERT_EQ(run({"preset", "save", "Mine v1.2", "--gain", "2"}).code, 0);
    EXPECT_EQ(presetOf({"--state", "session", "--preset", "mine V1.2"}),
              R"({"modified":false,"name":"Mine v1.2"})");
    EXPECT_EQ(presetOf({"--preset", file("documents/Quillmark/Vanta 2/Mine v1.2.qmp"), "--set", "Gain=4"}),
              R"({"modified":true,"name":"Mine v1.2"})");
}

TEST_F(StateCommands, BadFilesAreNamedAndNothingIsLost) {
    VantaPlugin plugin(kStereoLayout);
    setUp(plugin);
    write("session", plugin);
    const std::string whole = readBytes(file("session"));
    test::writeBytes(file("cut"), whole.substr(0, whole.size() / 2));
    test::writeBytes(file("foreign"), "Vn2p and so on");
    test::writeSound(file("in.wav"), {test::Signal(1000, 0.1f)}, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 44100);
    for (const std::string name : {"cut", "foreign", "missing", "documents"}) {
        for (const auto& arguments :
             {std::vector<std::string>{"state", "show", name},
              std::vector<std::string>{"render", "in.wav", "out.wav", "--state", name}}) {
            const ProgramRun result = run(arguments);
            EXPECT_EQ(result.code, 1) << name;
            EXPECT_THAT(result.err, HasSubstr(name + ": "));
        }
    }
    EXPECT_FALSE(std::filesystem::exists(file("out.wav")));
    EXPECT_EQ(run({"state", "save", "session"}).code, 1) << "without --force";
    EXPECT_EQ(run({"render", "in.wav", "session", "--state", "session", "--format", "wav", "--force"}).code,
              1);
    EXPECT_EQ(readBytes(file("session")), whole);
}

}  // namespace
}  // namespace vanta
