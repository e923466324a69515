#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fmt/format.h>

#include <limits>
#include <string>
#include <tuple>
#include <vector>

#include "plugin/settings/plugin_settings.hpp"
#include "plugin/settings/product_settings.hpp"
#include "plugin/settings/registry_serializer.hpp"
#include "plugin/settings/settings_file.hpp"
#include "plugin/settings/shared_settings.hpp"
#include "plugin/settings/user_folders.hpp"
#include "tests/plugin/user_home.hpp"

namespace vanta::test {
namespace {

const std::string kKey = "Software\\Quillmark\\Vanta\\2.0";
const Product kProduct{"Vanta", 2, 1, "2.0.1"};
constexpr const char* kFile = "config/Quillmark/Vanta/2.0.conf";

std::string readText(const std::string& name) {
    return RegistryReader(kKey).text(name, {}, "absent");
}

int readInteger(const std::string& name, int absent = -77) {
    return RegistryReader(kKey).integer(name, 0, absent);
}

TEST(Settings, AnyValueComesBackAsItWas) {
    using std::string;
    using Blob = std::vector<std::uint8_t>;
    const UserHome home;
    RegistryWriter writer(kKey);
    for (const int number : {0, -1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        EXPECT_EQ(writer.integer("Number", number, 5), number);
        EXPECT_EQ(readInteger("Number"), number);
    }
    for (const string& text : {string(), string(" blanks "), string("two\nlines\r\n"), string("\\s\\t=;#[x]"),
                               string("\xE2\x99\xAB"), string("caf\xE9/\xFF"), string("a\0b", 3)}) {
        EXPECT_EQ(writer.text("Text", text, {}), text);
        EXPECT_EQ(readText("Text"), text);
    }
    for (Blob bytes : {Blob{}, {0, 1, 127, 128, 255}}) {
        writer.binary("Bytes", bytes);
        Blob found{9};
        RegistryReader(kKey).binary("Bytes", found);
        EXPECT_EQ(found, bytes);
    }
    writer.real("Real", 0.1, 0.0);
    EXPECT_EQ(RegistryReader(kKey).real("Real", 0.0, 7.0), 0.1);
}

TEST(Settings, AValueOfAnotherTypeIsAbsentAndIsReplaced) {
    const UserHome home;
    home.write(kFile, "[Integers]\nSwitch=0\nSwitch=1\n[Texts]\nOther=x\n[Integers]\nSwitch=1\n");
    EXPECT_EQ(readInteger("Switch"), 1);
    EXPECT_EQ(readText("Switch"), "absent");
    RegistryWriter(kKey).text("Switch", "on", {});
    EXPECT_EQ(readInteger("Switch"), -77);
    EXPECT_EQ(readText("Switch"), "on");
    EXPECT_EQ(readText("Other"), "x");
    EXPECT_EQ(readBytes(home / kFile).find("Switch=1"), std::string::npos);
}

TEST(Settings, AWriteChangesOneValueAndKeepsWhatTheUserWrote) {
    const UserHome home;
    home.write(kFile, "# mine\n[Integers]\n# as I like it\nRetinaEnabled=150\n\n[Elsewhere]\nx=y z\n");
    RegistryWriter(kKey).integer("GraphicsAcceleration", 2, 0);
    const std::string content = readBytes(home / kFile);
    for (const char* part : {"# mine\n", "# as I like it\nRetinaEnabled=150\n", "[Elsewhere]\nx=y z\n"}) {
        EXPECT_NE(content.find(part), std::string::npos) << content;
    }
    EXPECT_EQ(readInteger("RetinaEnabled"), 150);
    EXPECT_EQ(readInteger("GraphicsAcceleration"), 2);
}

TEST(Settings, KeyPathsAndNamesStayInsideTheConfiguration) {
    const UserHome home;
    for (const char* path :
         {"", "Software\\", "Software\\..\\evil", "a\\\\b", "a/../../b", "a\\.", "..\\x"}) {
        EXPECT_TRUE(SettingsStore(path).file().empty()) << path;
        EXPECT_FALSE(SettingsStore(path).write("Name", 1)) << path;
    }
    for (const char* name : {"", "a=b", "[x]", "two\nlines", "a b", "\xC3\xA4"}) {
        EXPECT_FALSE(SettingsStore(kKey).write(name, 1)) << name;
    }
    EXPECT_FALSE(std::filesystem::exists(home / "config"));
}

TEST(Settings, ManyProcessesWriteAtOnceAndLoseNothing) {
    const UserHome home;
    constexpr int kProcesses = 6;
    constexpr int kValues = 20;
    for (int p = 0; p < kProcesses; ++p) {
        if (::fork() != 0) continue;
        RegistryWriter writer(kKey);
        for (int i = 0; i < kValues; ++i) writer.integer(fmt::format("P{}_{}", p, i), i, 0);
        ::_exit(0);
    }
    for (int status = 0; ::wait(&status) > 0;) EXPECT_EQ(status, 0);
    for (int i = 0; i < kProcesses * kValues; ++i) {
        EXPECT_EQ(readInteger(fmt::format("P{}_{}", i / kValues, i % kValues)), i % kValues);
    }
}

TEST(Settings, ADamagedFileIsToldAndKeptAside) {
    UserHome home;
    const std::string damaged = "[Integers]\nRetinaEnabled=150\n\x01 no line of ours\n";
    const auto file = home.write(kFile, damaged);
    EXPECT_EQ(readInteger("RetinaEnabled"), -77);
    EXPECT_EQ(readInteger("RetinaEnabled"), -77);
    EXPECT_EQ(readBytes(file), damaged);
    ASSERT_EQ(home.notices.size(), 1u);
    EXPECT_NE(home.notices[0].find(file.string()), std::string::npos);

    EXPECT_TRUE(SettingsStore(kKey).write("RetinaEnabled", 120));
    EXPECT_EQ(readInteger("RetinaEnabled"), 120);
    EXPECT_EQ(readBytes(file.string() + ".damaged"), damaged);
    EXPECT_EQ(home.notices.size(), 2u);

    home.write(kFile, std::string(40, '\0'));
    EXPECT_TRUE(SettingsStore(kKey).write("RetinaEnabled", 130));
    EXPECT_EQ(readBytes(file.string() + ".damaged"), damaged);
    EXPECT_EQ(readBytes(file.string() + ".damaged-2"), std::string(40, '\0'));

    std::filesystem::remove(file);
    std::filesystem::create_directory(file);
    home.notices.clear();
    EXPECT_EQ(readInteger("RetinaEnabled"), -77);
    EXPECT_EQ(home.notices.size(), 1u) << "what cannot be read is told as well";
}

TEST(Settings, TheMachinesSettingsAreOnlyRead) {
    const UserHome home;
    EXPECT_EQ(helpFileName(kProduct), "");
    home.write("machine/Quillmark/Vanta/2.0.conf", "[Texts]\nHelpFileName=/usr/share/vanta/help\n");
    EXPECT_EQ(helpFileName(kProduct), "/usr/share/vanta/help");
    EXPECT_FALSE(SettingsStore(kKey, SettingsHive::Machine).write("HelpFileName", "x"));
}

TEST(SharedSettings, StoresWhatChangesOnceItIsLoadedAndNothingElse) {
    const UserHome home;
    SharedSettings here(kKey);
    here.load();
    here.savePresetItemEnabled = true;
    EXPECT_FALSE(std::filesystem::exists(home / "config"));
    here.loaded = true;
    SharedSettings there(kKey);
    there.load();
    there.loaded = true;
    there.showComponentDisplays = false;
    here.retinaEnabled = 999;
    EXPECT_EQ(readInteger("ShowComponentDisplays"), 0) << "what another process stored is not undone";

    SharedSettings again(kKey);
    again.load();
    EXPECT_EQ(again.retinaEnabled, 200);
    EXPECT_TRUE(again.savePresetItemEnabled);
    EXPECT_FALSE(again.showComponentDisplays);
}

TEST(SharedSettings, TheMakersKeyOverridesTheProducts) {
    const UserHome home;
    SharedSettings settings(kKey);
    settings.retinaEnabled = 150;
    EXPECT_EQ(readProcessGraphics(settings).scale, 1.5);
    RegistryWriter(Product::rootKey()).integer("RetinaEnabled", 1, 0);
    RegistryWriter(Product::rootKey()).integer("GraphicsAcceleration", 0, 0);
    EXPECT_EQ(readProcessGraphics(settings).scale, 0.0);
    EXPECT_EQ(readProcessGraphics(settings).acceleration, GraphicsAccelerationMode::Off);
}

InterfaceSizes fourSizes(bool resizable = true) {
    return {{{655, 290}, {800, 480}, {950, 570}, {1330, 798}}, 2, resizable, {800, 480}, 0};
}

TEST(PluginSettings, TheInterfaceFallsBackToWhatTheScreenShows) {
    const std::tuple<int, InterfaceSize, int> cases[] = {{3, {1280, 800}, 2},   {3, {1024, 600}, 0},
                                                         {3, {2560, 1440}, 3},  {2, {10, 10}, 0},
                                                         {-1, {1024, 600}, -1}, {0, {2560, 1440}, 0}};
    for (const auto& [layout, screen, expected] : cases) {
        PluginSettings settings(kKey, fourSizes());
        settings.interfaceLayout = layout;
        settings.interfaceWidth = 3000;
        settings.interfaceHeight = 2000;
        settings.fitToScreen(screen);
        EXPECT_EQ(settings.interfaceLayout, expected);
        EXPECT_EQ(settings.interfaceWidth, std::clamp(screen.width, 800, 3000));
        EXPECT_EQ(settings.interfaceHeight, std::clamp(screen.height - 165, 480, 2000));
    }
}

TEST(PluginSettings, AFreeSizeIsStoredInOneGo) {
    const UserHome home;
    PluginSettings settings(kKey, fourSizes());
    settings.load();
    settings.loaded = true;
    EXPECT_EQ(settings.interfaceSize(), (InterfaceSize{950, 570}));
    settings.setInterfaceSize({1000, 100});
    EXPECT_EQ(settings.interfaceSize(), (InterfaceSize{1000, 480}));
    PluginSettings again(kKey, fourSizes());
    again.load();
    EXPECT_EQ(again.interfaceSize(), (InterfaceSize{1000, 480}));

    PluginSettings fixed(kKey, fourSizes(false));
    fixed.load();
    EXPECT_EQ(fixed.interfaceSize(), (InterfaceSize{655, 290})) << "a free size is none of its choices";
}

TEST(ProductSettings, PlacesFollowTheBaseFolders) {
    const UserHome home;
    EXPECT_EQ(kProduct.key(), kKey);
    EXPECT_EQ(kProduct.applicationDataFolder(), home / "data/Quillmark/Vanta 2");
    EXPECT_EQ(kProduct.defaultPresetFolder(), home / "documents/Quillmark/Vanta 2");
    ::unsetenv("XDG_DOCUMENTS_DIR");
    EXPECT_EQ(documentsFolder(), home.path);
    home.write("config/user-dirs.dirs",
               "# XDG_DOCUMENTS_DIR=\"/no\"\nXDG_DOCUMENTS_DIR=\"$HOME/My \\\"Papers\\\"\"\n");
    EXPECT_EQ(documentsFolder(), home / "My \"Papers\"");
    home.write("config/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"relative\"\n");
    EXPECT_EQ(documentsFolder(), home.path);
    ::setenv("XDG_CONFIG_HOME", "relative", 1);
    EXPECT_EQ(configurationFolder(), home / ".config");
}

TEST(ProductSettings, APresetFolderThatIsGoneFallsBack) {
    const UserHome home;
    EXPECT_EQ(presetFolder(kProduct), kProduct.defaultPresetFolder());
    std::filesystem::create_directories(home / "mine");
    setPresetFolder(kProduct, home / "mine");
    EXPECT_EQ(presetFolder(kProduct), home / "mine");
    std::filesystem::remove_all(home / "mine");
    EXPECT_EQ(presetFolder(kProduct), kProduct.defaultPresetFolder());
    EXPECT_FALSE(firstVersionPresetFolder(kProduct));
    RegistryWriter(kProduct.key(1)).text("PresetFolder", "/old", {});
    EXPECT_EQ(firstVersionPresetFolder(kProduct), "/old");
}

}  // namespace
}  // namespace vanta::test
