#include <gmock/gmock.h>

#include <filesystem>

#include "interface/frame/generic_dialog.hpp"
#include "interface/menus/open_externally.hpp"
#include "plugin/settings/product_settings.hpp"
#include "tests/interface/frame_rig.hpp"

namespace vanta::interface {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;

class FrameMenusTest : public ::testing::Test {
protected:
    FrameMenusTest() { frame.attachEditor(&editor); }

    /// What happens to somebody who opens the menu and chooses an item.
    void choose(ActionMenu& menu, const std::string& text) {
        desktop.choice = [&](gui::PopupMenu& shown) {
            gui::MenuItem* item = findItem(shown, text);
            EXPECT_TRUE(item) << text;
            return item;
        };
        menu.show({10, 10});
        desktop.drainRelay();
    }
    void choosePreset(const std::string& text) { choose(frame.presetsMenu(), text); }
    PresetState::Values current() { return plugin.presetState().values(); }
    void step(Command command) {
        frame.commands().run(command);
        desktop.drainRelay();
    }

    FactoryHome home;
    VantaPlugin plugin{kStereoLayout};
    TestEditor editor;
    Desktop desktop{800.0f, 480.0f};
    TestFrame frame{desktop, plugin};
};

TEST_F(FrameMenusTest, PresetsAreListedLoadedAndTakenBack) {
    std::vector<std::string> items = listed(frame.presetsMenu().refill());
    EXPECT_THAT(items, Contains("*Default Setting"));
    EXPECT_GT(items.size(), 58u);
    const std::vector<std::string> end(items.end() - 11, items.end());
    EXPECT_THAT(end, ElementsAre("Save", "Save As...", "-", "Options", "  Enable MIDI Program Changes", "  -",
                                 "  Save As Default", "  -", "  Open Other Preset...",
                                 "  Change Preset Folder...", "  Restore Factory Presets"));
    const auto first = std::find_if(items.begin(), items.end(),
                                    [](const std::string& text) { return text.starts_with("  "); });
    const std::string name = first->substr(2);
    const std::vector<float> before = plugin.parameterValues();
    choosePreset(name);
    EXPECT_EQ(current().name, name);
    EXPECT_EQ(frame.presetsButton->text().text.value(), name);
    EXPECT_THAT(listed(frame.presetsMenu().refill()), Contains("  *" + name));
    EXPECT_NE(plugin.parameterValues(), before);
    EXPECT_NEAR(frame.bindings().control(3)->normalized(), plugin.attack.normalize(plugin.attack.value()),
                1.0f / 36000.0f);
    EXPECT_EQ(plugin.undoHistory().undoCount(), 1);
    step(Command::Undo);
    EXPECT_EQ(plugin.parameterValues(), before);
    EXPECT_EQ(current().name, "Default Setting");
    choosePreset("Enable MIDI Program Changes");
    EXPECT_TRUE(plugin.statics().settings.enableMidiProgramChanges);
}

TEST_F(FrameMenusTest, StepsThroughTheListAndRound) {
    std::vector<PresetEntry*> all;
    plugin.statics().presets.flatten(all);
    plugin.setPresetName("Somewhere else");
    step(Command::NextPreset);
    EXPECT_EQ(current().path, all.front()->path);
    step(Command::PreviousPreset);
    EXPECT_EQ(current().path, all.back()->path);
    step(Command::NextPreset);
    step(Command::NextPreset);
    EXPECT_EQ(current().path, all[1]->path);
    std::ofstream(all[2]->path) << "no preset";
    const std::vector<float> before = plugin.parameterValues();
    const int steps = plugin.undoHistory().undoCount();
    step(Command::NextPreset);
    EXPECT_THAT(desktop.messages, ElementsAre(::testing::StartsWith("The preset file could not be opened.")));
    EXPECT_EQ(plugin.parameterValues(), before);
    EXPECT_EQ(current().path, all[1]->path);
    EXPECT_EQ(plugin.undoHistory().undoCount(), steps);
}

TEST_F(FrameMenusTest, PresetsAreSavedWhereTheUserSays) {
    frame.gestures().set(0, 4.0f);
    desktop.answer = (home.path / "mine" / "Mine").string();
    std::filesystem::create_directories(home.path / "mine");
    choosePreset("Save As...");
    EXPECT_THAT(desktop.askedAt, ::testing::EndsWith("Default Setting.qmp"));
    EXPECT_EQ(current().path, home.path / "mine" / "Mine.qmp");
    EXPECT_FALSE(current().modified);
    frame.gestures().set(0, 8.0f);
    choosePreset("Save");
    frame.gestures().set(0, 0.0f);
    desktop.answer = (home.path / "mine" / "Mine.qmp").string();
    plugin.lockOutput.setValue(0.0f, 0);
    choosePreset("Open Other Preset...");
    EXPECT_FLOAT_EQ(plugin.gain.value(), 8.0f);
    std::filesystem::remove(home.path / "mine" / "Mine.qmp");
    EXPECT_THAT(listed(frame.presetsMenu().refill()), Not(Contains("Save")));
    desktop.answer = (home.path / "nowhere" / "Mine.qmp").string();
    choosePreset("Save As...");
    EXPECT_THAT(desktop.messages, ElementsAre(::testing::EndsWith("nowhere/Mine.qmp")));
    desktop.answer.reset();
    choosePreset("Save As...");
    EXPECT_EQ(desktop.messages.size(), 1u) << "cancelled";
    choosePreset("Save As Default");
    EXPECT_FLOAT_EQ(VantaPlugin(kStereoLayout).gain.value(), 8.0f);
    desktop.hasDialogs = false;
    for (const char* item : {"Save As...", "Open Other Preset...", "Change Preset Folder..."}) {
        desktop.messages.clear();
        choosePreset(item);
        EXPECT_EQ(desktop.messages.size(), 1u) << "a desktop without dialogs says so";
    }
}

TEST_F(FrameMenusTest, FoldersChangeAndFactoryPresetsComeBack) {
    const std::filesystem::path empty = home.path / "empty";
    std::filesystem::create_directories(empty);
    desktop.answer = empty.string();
    choosePreset("Change Preset Folder...");
    EXPECT_EQ(presetFolder(plugin.statics().product), empty);
    EXPECT_EQ(listed(frame.presetsMenu().refill()).front(), "!(No Presets)");
    step(Command::NextPreset);
    desktop.cancels = true;
    choosePreset("Restore Factory Presets");
    EXPECT_TRUE(std::filesystem::is_empty(empty));
    desktop.cancels = false;
    desktop.messages.clear();
    choosePreset("Restore Factory Presets");
    EXPECT_EQ(desktop.messages.size(), 1u) << "the question alone";
    EXPECT_GT(listed(frame.presetsMenu().refill()).size(), 58u);
    desktop.answer = (home.path / "missing").string();
    choosePreset("Change Preset Folder...");
    EXPECT_EQ(presetFolder(plugin.statics().product), empty);
    EXPECT_EQ(desktop.messages.size(), 2u);
}

TEST_F(FrameMenusTest, HelpMenuLeadsSomewhere) {
    EXPECT_THAT(listed(frame.helpMenu().refill()),
                ElementsAre("Help Topics", "*Show Interactive Help Hints", "-", "Quillmark Web Site",
                            "Quillmark Support", "-", "About"));
    choose(frame.helpMenu(), "Show Interactive Help Hints");
    EXPECT_FALSE(plugin.statics().settings.showInteractiveHelp);
    choose(frame.helpMenu(), "About");
    auto* about = dynamic_cast<GenericDialog*>(desktop.root->children().back());
    ASSERT_TRUE(about);
    const gui::Rect button = about->button().windowBounds();
    EXPECT_EQ(button.width(), GenericDialog::kButtonWidth);
    EXPECT_TRUE(about->panel().intersected(button) == button);
    EXPECT_EQ(desktop.root->childAt({5, 5}), about) << "nothing else can be used";
    desktop.root->platformKey({gui::Key::Escape, 0, 0});
    desktop.drainRelay();
    EXPECT_NE(desktop.root->childAt({5, 5}), about);

    // What opens things is found on the PATH, gets its argument untouched, and outlives nobody's patience.
    const std::filesystem::path tools = home.path / "tools";
    std::filesystem::create_directories(tools);
    const std::string path = std::getenv("PATH");
    ::setenv("PATH", tools.c_str(), 1);
    choose(frame.helpMenu(), "Quillmark Web Site");
    EXPECT_THAT(desktop.messages.back(), ::testing::HasSubstr(frame.product().webSite));
    home.write("tools/xdg-open", "#!/bin/sh\necho \"$#:$1\" > '" + (home.path / "opened").string() + "'\n");
    std::filesystem::permissions(tools / "xdg-open", std::filesystem::perms::owner_all);
    EXPECT_TRUE(openExternally("https://a.example/?q=$(id) `id`;'\""));
    std::string opened;
    for (int i = 0; i < 500 && opened.empty(); ++i) {
        ::usleep(10000);
        opened = test::readBytes(home.path / "opened");
    }
    EXPECT_EQ(opened, "1:https://a.example/?q=$(id) `id`;'\"\n");
    EXPECT_FALSE(openExternally("--version"));
    ::setenv("PATH", path.c_str(), 1);
}

}  // namespace
}  // namespace vanta::interface
