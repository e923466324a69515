#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fmt/format.h>

#include <csignal>
#include <limits>
#include <string>
#include <vector>

#include "plugin/settings/plugin_settings.hpp"
#include "plugin/settings/product_settings.hpp"
#include "plugin/settings/registry_serializer.hpp"
#include "plugin/settings/settings_file.hpp"
#include "plugin/settings/shared_settings.hpp"
#include "plugin/settings/user_folders.hpp"
#include "tests/plugin/mutations.hpp"
#include "tests/plugin/user_home.hpp"

namespace vanta {
namespace {

using test::contentOf;
using test::UserHome;

const std::string kKey = "Software\\Quillmark\\Vanta\\2.0";
const Product kProduct{"Vanta", 2, 1, "2.0.1"};
constexpr const char* kFile = "config/Quillmark/Vanta/2.0.conf";

std::string readText(const std::string& name) {
    return RegistryReader(kKey).text(name, {}, "absent");
}

int readInteger(const std::string& name, int absent = -77) {
    return RegistryReader(kKey).integer(name, 0, absent);
}

/// Runs `work` in a process of its own; the result is its id.
template <typename Work>
pid_t spawn(Work work) {
    const pid_t child = ::fork();
    if (child == 0) {
        work();
        ::_exit(0);
    }
    return child;
}

TEST(Settings, AnyValueComesBackAsItWas) {
    const UserHome home;
    RegistryWriter writer(kKey);
    for (const int number : {0, -1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        EXPECT_EQ(writer.integer("Number", number, 5), number);
        EXPECT_EQ(readInteger("Number"), number);
    }
    const std::vector<std::string> texts{"",
                                         "plain",
                                         " blanks ",
                                         "two\nlines\r\n",
                                         "\\s\\t=;#[x]",
                                         "H\xC3\xA4ndel \xE2\x99\xAB",
                                         "caf\xE9/\xFF",
                                         std::string("a\0b", 3)};
    for (const std::string& text : texts) {
        EXPECT_EQ(writer.text("Text", text, {}), text);
        EXPECT_EQ(readText("Text"), text);
    }
    for (std::vector<std::uint8_t> bytes : {std::vector<std::uint8_t>{}, {0, 1, 127, 128, 255}}) {
        writer.binary("Bytes", bytes);
        std::vector<std::uint8_t> found{9};
        RegistryReader(kKey).binary("Bytes", found);
        EXPECT_EQ(found, bytes);
    }
    writer.real("Real", 0.1, 0.0);
    EXPECT_EQ(RegistryReader(kKey).real("Real", 0.0, 7.0), 0.1);
    EXPECT_TRUE(home.notices.empty());
}

TEST(Settings, AValueOfAnotherTypeIsAbsentAndIsReplaced) {
    const UserHome home;
    RegistryWriter writer(kKey);
    EXPECT_TRUE(writer.boolean("Switch", true, false));
    EXPECT_EQ(readInteger("Switch"), 1);
    EXPECT_EQ(readText("Switch"), "absent");
    writer.text("Switch", "on", {});
    EXPECT_EQ(readInteger("Switch"), -77);
    EXPECT_EQ(readText("Switch"), "on");
    EXPECT_EQ(contentOf(home.folder.file(kFile)).find("Switch=1"), std::string::npos);
}

TEST(Settings, AWriteChangesOneValueAndKeepsWhatTheUserWrote) {
    const UserHome home;
    home.write(kFile, "# mine\n[Integers]\n# as I like it\nRetinaEnabled=150\n\n[Elsewhere]\nx=y z\n");
    RegistryWriter(kKey).integer("GraphicsAcceleration", 2, 0);
    const std::string content = contentOf(home.folder.file(kFile));
    for (const char* part : {"# mine\n", "# as I like it\nRetinaEnabled=150\n", "[Elsewhere]\nx=y z\n"}) {
        EXPECT_NE(content.find(part), std::string::npos) << content;
    }
    EXPECT_EQ(readInteger("RetinaEnabled"), 150);
    EXPECT_EQ(readInteger("GraphicsAcceleration"), 2);
}

TEST(Settings, ANameThatAFileGivesTwiceIsReplacedForGood) {
    const UserHome home;
    home.write(kFile, "[Integers]\nA=1\nA=2\n[Texts]\nB=x\n[Integers]\nA=3\n");
    EXPECT_TRUE(SettingsStore(kKey).write("A", std::string("text")));
    EXPECT_EQ(readText("A"), "text");
    EXPECT_EQ(readText("B"), "x");
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
    EXPECT_FALSE(std::filesystem::exists(home.folder.file("config")));
}

TEST(Settings, ManyProcessesWriteAtOnceAndLoseNothing) {
    const UserHome home;
    constexpr int kProcesses = 6;
    constexpr int kValues = 20;
    std::vector<pid_t> children;
    for (int p = 0; p < kProcesses; ++p) {
        children.push_back(spawn([p] {
            RegistryWriter writer(kKey);
            for (int i = 0; i < kValues; ++i) writer.integer(fmt::format("P{}_{}", p, i), i, 0);
        }));
    }
    for (const pid_t child : children) {
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    for (int p = 0; p < kProcesses; ++p) {
        for (int i = 0; i < kValues; ++i) {
            EXPECT_EQ(readInteger(fmt::format("P{}_{}", p, i)), i);
        }
    }
}

TEST(Settings, AProcessThatIsKilledLeavesASoundFileAndNoLock) {
    const UserHome home;
    const std::string half(3000, 'x');
    RegistryWriter(kKey).text("Text", half + '0', {});
    for (int round = 0; round < 25; ++round) {
        const pid_t child = spawn([&] {
            for (int i = 0;; ++i) RegistryWriter(kKey).text("Text", half + std::to_string(i % 10), {});
        });
        ::usleep(static_cast<useconds_t>(1000 + 700 * round));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        const SettingsFile file(home.folder.file(kFile));
        ASSERT_EQ(file.state(), SettingsFile::State::Sound);
        ASSERT_EQ(readText("Text").size(), half.size() + 1);
    }
    EXPECT_TRUE(SettingsStore(kKey).write("After", 1));
    EXPECT_TRUE(home.notices.empty());
}

TEST(Settings, ADamagedFileIsToldAndKeptAside) {
    UserHome home;
    const std::string damaged = "[Integers]\nRetinaEnabled=150\n\x01 no line of ours\n";
    const auto file = home.write(kFile, damaged);
    EXPECT_EQ(readInteger("RetinaEnabled"), -77);
    EXPECT_EQ(readInteger("RetinaEnabled"), -77);
    EXPECT_EQ(contentOf(file), damaged);
    ASSERT_EQ(home.notices.size(), 1u);
    EXPECT_NE(home.notices[0].find(file.string()), std::string::npos);

    EXPECT_TRUE(SettingsStore(kKey).write("RetinaEnabled", 120));
    EXPECT_EQ(readInteger("RetinaEnabled"), 120);
    EXPECT_EQ(contentOf(file.string() + ".damaged"), damaged);
    EXPECT_EQ(home.notices.size(), 2u);

    home.write(kFile, std::string(40, '\0'));
    EXPECT_TRUE(SettingsStore(kKey).write("RetinaEnabled", 130));
    EXPECT_EQ(contentOf(file.string() + ".damaged"), damaged);
    EXPECT_EQ(contentOf(file.string() + ".damaged-2"), std::string(40, '\0'));
}

TEST(Settings, WhatIsNoFileIsLeftAlone) {
    UserHome home;
    const auto path = home.folder.file(kFile);
    std::filesystem::create_directories(path / "inside");
    EXPECT_FALSE(SettingsStore(kKey).write("Name", 1));
    EXPECT_TRUE(std::filesystem::exists(path / "inside"));
    std::filesystem::remove_all(path);
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    EXPECT_FALSE(SettingsStore(kKey).write("Name", 1));  // and does not wait for a writer
    EXPECT_TRUE(std::filesystem::is_fifo(path));
    EXPECT_FALSE(home.notices.empty());
}

TEST(Settings, AFullDiskLeavesTheOldFile) {
    const UserHome home;
    RegistryWriter(kKey).integer("Name", 1, 0);
    const std::string before = contentOf(home.folder.file(kFile));
    rlimit limit{};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit none{0, limit.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &none);
    const bool written = SettingsStore(kKey).write("Name", 2);
    ::setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, handler);
    EXPECT_FALSE(written);
    EXPECT_EQ(contentOf(home.folder.file(kFile)), before);
    EXPECT_TRUE(SettingsStore(kKey).write("Name", 2));
}

TEST(Settings, AnyDamageIsSurvivedAndNothingIsOverwritten) {
    UserHome home;
    const std::string sound =
        "# c\n[Integers]\nA=1\nB=-5\n[Texts]\nT=a\\nb\n[Raw Texts]\nR=ff00\n[Bytes]\nX=0102ff\n";
    test::forMutations(sound, 400, [&](const std::string& damaged) {
        std::filesystem::remove_all(home.folder.file("config"));
        const auto file = home.write(kFile, damaged);
        for (const char* name : {"A", "B", "T", "R", "X"}) SettingsStore(kKey).read(name);
        const bool isSound = SettingsFile(file).state() == SettingsFile::State::Sound;
        ASSERT_TRUE(SettingsStore(kKey).write("New", 5));
        ASSERT_EQ(readInteger("New"), 5);
        if (!isSound) {
            ASSERT_EQ(contentOf(file.string() + ".damaged"), damaged);
        }
    });
}

TEST(Settings, TheMachinesSettingsAreOnlyRead) {
    const UserHome home;
    EXPECT_EQ(helpFileName(kProduct), "");
    home.write("machine/Quillmark/Vanta/2.0.conf", "[Texts]\nHelpFileName=/usr/share/vanta/help\n");
    EXPECT_EQ(helpFileName(kProduct), "/usr/share/vanta/help");
    EXPECT_FALSE(SettingsStore(kKey, SettingsHive::Machine).write("HelpFileName", "x"));
}

TEST(SharedSettings, StoresItselfOnlyOnceItIsLoaded) {
    const UserHome home;
    SharedSettings settings(kKey);
    settings.load();
    settings.savePresetItemEnabled = true;
    EXPECT_FALSE(std::filesystem::exists(home.folder.file("config")));
    settings.loaded = true;
    settings.retinaEnabled = 999;
    EXPECT_EQ(readInteger("RetinaEnabled"), 200);
    EXPECT_EQ(readInteger("SavePresetItemEnabled"), 1);

    SharedSettings again(kKey);
    again.load();
    EXPECT_TRUE(again.savePresetItemEnabled);
    EXPECT_EQ(again.retinaEnabled, 200);
    EXPECT_TRUE(again.showInteractiveHelp);
}

TEST(SharedSettings, DoesNotUndoWhatAnotherProcessStored) {
    const UserHome home;
    SharedSettings here(kKey);
    SharedSettings there(kKey);
    for (SharedSettings* settings : {&here, &there}) {
        settings->load();
        settings->loaded = true;
    }
    there.showComponentDisplays = false;
    here.enableMidiProgramChanges = true;
    EXPECT_EQ(readInteger("ShowComponentDisplays"), 0);
    EXPECT_EQ(readInteger("EnableMIDIProgramChanges"), 1);
}

TEST(SharedSettings, TheMakersKeyOverridesTheProducts) {
    const UserHome home;
    SharedSettings settings(kKey);
    settings.retinaEnabled = 150;
    EXPECT_EQ(readProcessGraphics(settings).scale, 1.5);
    EXPECT_EQ(readProcessGraphics(settings).acceleration, GraphicsAccelerationMode::OpenGl60);
    RegistryWriter(Product::rootKey()).integer("RetinaEnabled", 1, 0);
    RegistryWriter(Product::rootKey()).integer("GraphicsAcceleration", 0, 0);
    EXPECT_EQ(readProcessGraphics(settings).scale, 0.0);
    EXPECT_EQ(readProcessGraphics(settings).acceleration, GraphicsAccelerationMode::Off);
    EXPECT_EQ(interfaceScale(0), 1.0);
    EXPECT_EQ(interfaceScale(99), 1.0);
    EXPECT_EQ(interfaceScale(100), 1.0);
    EXPECT_EQ(interfaceScale(200), 2.0);
}

InterfaceSizes fourSizes(bool resizable = true) {
    return {{{655, 290}, {800, 480}, {950, 570}, {1330, 798}}, 2, resizable, {800, 480}, 0};
}

TEST(PluginSettings, TheInterfaceFallsBackToWhatTheScreenShows) {
    struct Case {
        int layout;
        InterfaceSize screen;
        int expected;
    };
    for (const Case& c : {Case{3, {1280, 800}, 2}, Case{3, {1024, 600}, 0}, Case{3, {2560, 1440}, 3},
                          Case{-1, {1024, 600}, -1}, Case{2, {10, 10}, 0}, Case{0, {2560, 1440}, 0}}) {
        PluginSettings settings(kKey, fourSizes());
        settings.interfaceLayout = c.layout;
        settings.interfaceWidth = 3000;
        settings.interfaceHeight = 2000;
        settings.fitToScreen(c.screen);
        EXPECT_EQ(settings.interfaceLayout, c.expected);
        EXPECT_EQ(settings.interfaceWidth, std::clamp(c.screen.width, 800, 3000));
        EXPECT_EQ(settings.interfaceHeight, std::clamp(c.screen.height - 165, 480, 2000));
    }
}

TEST(PluginSettings, AFreeSizeIsStoredInOneGo) {
    const UserHome home;
    PluginSettings settings(kKey, fourSizes());
    settings.load();
    settings.loaded = true;
    EXPECT_EQ(settings.interfaceSize(), (InterfaceSize{950, 570}));
    settings.setInterfaceSize({950, 570});
    EXPECT_EQ(settings.interfaceLayout, 2);
    settings.setInterfaceSize({1000, 100});
    EXPECT_EQ(settings.interfaceSize(), (InterfaceSize{1000, 480}));
    PluginSettings again(kKey, fourSizes());
    again.load();
    EXPECT_EQ(again.interfaceSize(), (InterfaceSize{1000, 480}));
    EXPECT_EQ(settings.sizes().limit(0, {2000, 2000}), (InterfaceSize{655, 290}));

    PluginSettings fixed(kKey, fourSizes(false));
    fixed.load();
    EXPECT_EQ(fixed.interfaceLayout, 0);  // a free size is none of its choices
    fixed.setInterfaceSize({1000, 1000});
    EXPECT_EQ(fixed.interfaceSize(), (InterfaceSize{655, 290}));
}

TEST(ProductSettings, PlacesFollowTheBaseFolders) {
    const UserHome home;
    EXPECT_EQ(kProduct.key(), kKey);
    EXPECT_EQ(kProduct.applicationDataFolder(), home.folder.file("data/Quillmark/Vanta 2"));
    EXPECT_EQ(kProduct.defaultPresetFolder(), home.folder.file("documents/Quillmark/Vanta 2"));
    ::unsetenv("XDG_DOCUMENTS_DIR");
    EXPECT_EQ(documentsFolder(), home.folder.path());
    home.write("config/user-dirs.dirs",
               "# XDG_DOCUMENTS_DIR=\"/no\"\nXDG_DOCUMENTS_DIR=\"$HOME/My \\\"Papers\\\"\"\n");
    EXPECT_EQ(documentsFolder(), home.folder.file("My \"Papers\""));
    home.write("config/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"relative\"\n");
    EXPECT_EQ(documentsFolder(), home.folder.path());
    ::setenv("XDG_CONFIG_HOME", "relative", 1);
    EXPECT_EQ(configurationFolder(), home.folder.file(".config"));
}

TEST(ProductSettings, APresetFolderThatIsGoneFallsBack) {
    const UserHome home;
    EXPECT_EQ(presetFolder(kProduct), kProduct.defaultPresetFolder());
    std::filesystem::create_directories(home.folder.file("mine"));
    setPresetFolder(kProduct, home.folder.file("mine"));
    EXPECT_EQ(presetFolder(kProduct), home.folder.file("mine"));
    std::filesystem::remove_all(home.folder.file("mine"));
    EXPECT_EQ(presetFolder(kProduct), kProduct.defaultPresetFolder());
    EXPECT_FALSE(firstVersionPresetFolder(kProduct));
    RegistryWriter(kProduct.key(1)).text("PresetFolder", "/old", {});
    EXPECT_EQ(firstVersionPresetFolder(kProduct), "/old");
}

TEST(ProductSettings, ANewVersionIsNoticedOnce) {
    const UserHome home;
    EXPECT_TRUE(isNewVersion(kProduct));
    storeVersion(kProduct);
    EXPECT_FALSE(isNewVersion(kProduct));
    const Product next{"Vanta", 2, 1, "2.0.2"};
    EXPECT_TRUE(isNewVersion(next));
}

}  // namespace
}  // namespace vanta
