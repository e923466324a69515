#include <gmock/gmock.h>

#include <thread>

#include "interface/controls/ab_button.hpp"
#include "interface/hints/hint_texts.hpp"
#include "limiter/parameters/parameter_table.hpp"
#include "tests/host/session.hpp"
#include "tests/interface/frame_rig.hpp"

namespace vanta::interface {
namespace {

class FrameTest : public ::testing::Test {
protected:
    FrameTest() { open(); }
    void open() {
        desktop = std::make_unique<Desktop>(800.0f, 480.0f);
        frame = std::make_unique<TestFrame>(*desktop, plugin);
        frame->attachEditor(&editor);
        desktop->drainRelay();
    }
    void shut() {
        frame.reset();
        desktop.reset();
    }
    void press(Command command) {
        gui::Button& button = *frame->commands().button(command);
        const gui::Point at = button.windowBounds().origin() + gui::Point{5.0f, 5.0f};
        desktop->root->platformMouseDown(gui::kLeftPress, at, 0);
        desktop->root->platformMouseUp(gui::kLeftPress, at, 0);
        desktop->drainRelay();
    }
    bool ctrl(char32_t letter, int more = 0) {
        return desktop->root->platformKey({gui::Key::Character, gui::modifier::kCtrl | more, letter});
    }
    void set(float decibels) { frame->gestures().set(0, decibels); }
    float gain() { return plugin.gain.value(); }

    FactoryHome home;
    VantaPlugin plugin{kStereoLayout};
    TestEditor editor;
    std::unique_ptr<Desktop> desktop;
    std::unique_ptr<TestFrame> frame;
};

TEST_F(FrameTest, UndoRedoAndComparedSettings) {
    gui::Button& undo = *frame->commands().button(Command::Undo);
    gui::Button& redo = *frame->commands().button(Command::Redo);
    EXPECT_FALSE(undo.enabled);
    set(3.0f);
    set(6.0f);
    EXPECT_TRUE(undo.enabled);
    EXPECT_FALSE(redo.enabled);
    press(Command::Undo);
    EXPECT_FLOAT_EQ(gain(), 3.0f);
    EXPECT_EQ(frame->bindings().control(0)->value, 3600);
    EXPECT_TRUE(ctrl(U'z')) << "by the keyboard as well";
    EXPECT_FLOAT_EQ(gain(), 0.0f);
    EXPECT_FALSE(undo.enabled);
    EXPECT_TRUE(ctrl(U'Z', gui::modifier::kShift));
    EXPECT_TRUE(ctrl(U'y'));
    EXPECT_FLOAT_EQ(gain(), 6.0f);
    EXPECT_FALSE(ctrl(U'q')) << "the host's";
    press(Command::Undo);
    set(9.0f);
    EXPECT_FALSE(redo.enabled) << "a new change ends what can be redone";

    const auto alphaOf = [&](int slot) {
        auto& button = dynamic_cast<ABButton&>(*frame->commands().button(Command::Compare));
        return button.text(slot).color.value().alpha;
    };
    EXPECT_EQ(alphaOf(0), 255);
    EXPECT_EQ(alphaOf(1), ABButton::kOtherAlpha);
    press(Command::Compare);
    EXPECT_FLOAT_EQ(gain(), 0.0f) << "B is what there was when the interface opened";
    EXPECT_EQ(alphaOf(1), 255);
    set(1.0f);
    press(Command::Compare);
    EXPECT_FLOAT_EQ(gain(), 9.0f);
    press(Command::Copy);
    press(Command::Compare);
    EXPECT_FLOAT_EQ(gain(), 9.0f);
    press(Command::Undo);
    press(Command::Undo);
    EXPECT_FLOAT_EQ(gain(), 1.0f) << "also over a change of the slot";
    EXPECT_EQ(plugin.compareStates().current(), 1);
    shut();
    open();
    EXPECT_TRUE(frame->commands().button(Command::Undo)->enabled) << "the history outlives the interface";
    EXPECT_EQ(alphaOf(1), 255);
}

TEST_F(FrameTest, ChangesOfAllArriveAsOne) {
    frame->changed.clear();
    plugin.beginChange();
    for (int i = 0; i < 4; ++i) plugin.parameterAt(i)->setValue(plugin.parameterAt(i)->maximum(), 0);
    plugin.endChange();
    desktop->drainRelay();
    EXPECT_THAT(frame->changed, ::testing::ElementsAre(event::kAllParameters));
    EXPECT_EQ(frame->presetsButton->text(0).text.value(), "Default Setting");
    EXPECT_EQ(frame->presetsButton->text(1).text.value(), " *");
}

TEST_F(FrameTest, WhatOtherThreadsAskForIsDoneOnThisOne) {
    set(3.0f);
    std::thread other([&] {
        plugin.gain.setValue(8.0f, 0);
        frame->pushUndo();
        frame->sizing().apply();
    });
    other.join();
    EXPECT_EQ(plugin.undoHistory().undoCount(), 1);
    desktop->drainRelay();
    EXPECT_EQ(plugin.undoHistory().undoCount(), 2);
    EXPECT_EQ(frame->bindings().control(0)->value, 9600);
    EXPECT_EQ(editor.resizedTo, (InterfaceSize{950, 570}));
}

TEST_F(FrameTest, EventsThatWereLostAreMadeUpForInTheNextFrame) {
    while (desktop->relay()->post(12345, 0)) {
    }
    plugin.gain.setValue(6.0f, 0);
    desktop->drainRelay();
    EXPECT_EQ(frame->bindings().control(0)->value, 0);
    desktop->advance(1000 / GenericPluginInterface::kFramesPerSecond + 1);
    desktop->drainRelay();
    EXPECT_EQ(frame->bindings().control(0)->value, 7200);
}

TEST_F(FrameTest, SizesAreChosenRememberedAndLimited) {
    editor.area = InterfaceSize{1280, 900};
    EXPECT_THAT(listed(frame->sizesMenu().refill()),
                ::testing::ElementsAre("Compact", "Small", "*Medium", "!Large", "-", "Custom Size"));
    frame->sizing().choose(1);
    EXPECT_EQ(plugin.settings().interfaceLayout, 1);
    EXPECT_FALSE(editor.resizedTo) << "it has that size";
    frame->sizing().choose(InterfaceSizing::kCompact);
    EXPECT_EQ(desktop->root->localBounds(), (gui::Rect{0, 0, 655, 290}));
    press(Command::FullScreen);
    EXPECT_FALSE(desktop->root->fullScreen) << "Compact has one size";
    EXPECT_FALSE(frame->commands().button(Command::FullScreen)->enabled);
    desktop->root->setSize(700.0f, 300.0f);
    EXPECT_EQ(plugin.settings().interfaceLayout, InterfaceSizing::kCompact) << "and is not stretched";
    frame->postEvent(event::kStoreSize, 2 << 1);
    desktop->drainRelay();
    EXPECT_EQ(desktop->root->localBounds(), (gui::Rect{0, 0, 950, 570}));
    desktop->root->setSize(1201.0f, 700.0f);  // by the window's edge
    EXPECT_EQ(plugin.settings().interfaceLayout, PluginSettings::kFreeSize);
    EXPECT_EQ(plugin.interfaceWidth(), 1201);
    EXPECT_TRUE(frame->commands().button(Command::FullScreen)->enabled);
    press(Command::FullScreen);
    EXPECT_TRUE(desktop->root->fullScreen);
    desktop->root->setSize(1920.0f, 1080.0f);
    EXPECT_EQ(plugin.interfaceWidth(), 1201) << "a screen is no size to remember";
    desktop->root->platformKey({gui::Key::Escape, 0, 0});
    EXPECT_FALSE(desktop->root->fullScreen);
    editor.resizes = false;
    EXPECT_THAT(listed(frame->sizesMenu().refill()), ::testing::Not(::testing::Contains("Custom Size")));
    frame->sizing().choose(2);
    EXPECT_EQ(plugin.interfaceWidth(), 950) << "at the next opening";
    EXPECT_THAT(frame->hintWindow().text(), ::testing::StartsWith("Your host cannot dynamically resize"));
    EXPECT_TRUE(frame->hintWindow().isSticky());
    VantaPlugin next(kStereoLayout);
    EXPECT_EQ(next.interfaceWidth(), 950);
    fitToScreen(next, {820, 660});
    EXPECT_EQ(next.interfaceWidth(), 800);
}

TEST_F(FrameTest, HintsFollowThePointerAndMessagesStay) {
    HintWindow& window = frame->hintWindow();
    ASSERT_TRUE(window.visible) << "a new user is welcomed";
    EXPECT_THAT(window.text(), ::testing::StartsWith("Welcome to Quillmark Vanta 2!"));
    const auto hover = [&](gui::Point at) {
        desktop->root->platformMouseMove(at, 0);
        desktop->advance(gui::Hints::kDelayMs);
    };
    hover({39, 119});
    EXPECT_THAT(window.text(), ::testing::StartsWith("Welcome")) << "no hint takes its place";
    const gui::Point on = window.windowBounds().origin() + gui::Point{40.0f, 20.0f};
    EXPECT_EQ(desktop->root->childAt(on), &window) << "it takes clicks";
    desktop->root->platformMouseDown(gui::kLeftPress, on, 0);
    desktop->root->platformMouseUp(gui::kLeftPress, on, 0);
    EXPECT_FALSE(window.visible);
    EXPECT_FALSE(plugin.statics().settings.showWelcomeHint) << "once for all time";
    hover({300, 300});
    hover({39, 119});
    EXPECT_EQ(window.text(), plugin.gain.helpText);
    EXPECT_TRUE(window.visible);
    EXPECT_NE(desktop->root->childAt(window.windowBounds().origin() + gui::Point{40.0f, 20.0f}), &window)
        << "a hint is in nobody's way";
    desktop->root->platformMouseMove({700, 440}, 0);
    EXPECT_FALSE(window.visible);
    frame->hints().setEnabled(false);
    hover({39, 119});
    EXPECT_FALSE(window.visible);
    frame->showInHintWindow("Important", HelpHints::kAlways);
    EXPECT_TRUE(window.visible);
    frame->showInHintWindow({}, HelpHints::kAlways);
    EXPECT_FALSE(window.visible);
    // What the pointer is over is never covered.
    frame->hints().setEnabled(true);
    for (const float y : {100.0f, 300.0f, 460.0f}) {
        desktop->root->platformMouseMove({14.0f, y}, 0);
        frame->showInHintWindow("One line", HelpHints::kAlways);
        const gui::Control* hovered = desktop->root->hovered();
        if (hovered && hovered != desktop->root) {
            EXPECT_TRUE(hovered->windowBounds().intersected(window.windowBounds()).isEmpty());
        }
    }
    shut();
    open();
    EXPECT_FALSE(frame->hintWindow().visible) << "the welcome does not come back";
}

TEST_F(FrameTest, EverythingHasAHint) {
    for (const ParameterRow& row : kParameterTable) {
        EXPECT_FALSE(plugin.parameterAt(static_cast<int>(&row - kParameterTable.data()))->helpText.empty());
    }
    for (const char* name : {"Undo",
                             "A/B",
                             "Copy",
                             "Previous Preset",
                             "Presets",
                             "Help",
                             "Full Screen",
                             "MIDI Learn",
                             "MIDI Learn Menu",
                             "Resize",
                             "Advanced Panel",
                             "Level Display",
                             "Display Mode: Slow Down",
                             "Display Mode: Fast",
                             "Display Mode: Slow",
                             "Display Mode: Infinite",
                             "Display Mode: Off",
                             "Output Meter",
                             "Gain Reduction Meter",
                             "Loudness Meter",
                             "Dither Menu"}) {
        EXPECT_GT(hintText(name).size(), 60u) << name;
        EXPECT_EQ(hintText(name).find('\n'), std::string::npos) << name;
    }
    EXPECT_EQ(hintText("Redo"), "The Redo button cancels the last undo command.");
    EXPECT_EQ(hintText("Next Preset"), "The Next Preset button selects the next preset in the presets menu.");
    EXPECT_EQ(hintText("Loudness Reset"),
              "The Loudness Reset button resets all loudness measurements, including the maximum peak "
              "readings on the regular level meters.");
    EXPECT_EQ(hintText("No Such Thing"), "");
}

TEST_F(FrameTest, ControlsComeAndGoWithTheChannels) {
    gui::Control& shown = frame->factory().addLabel({0, 0, 10, 10}, "C");
    gui::Control& usable = frame->factory().addLabel({0, 0, 10, 10}, "D");
    frame->addChannelDelegate(std::make_unique<NumChannelsControlDelegate>(shown, 3, 10));
    frame->addChannelDelegate(std::make_unique<NumChannelsControlEnableDelegate>(usable, 1, 2));
    EXPECT_FALSE(shown.visible);
    EXPECT_TRUE(usable.enabled);
    plugin.channelLayout = 4;
    frame->postEvent(event::kLayoutChanged);
    desktop->drainRelay();
    EXPECT_EQ(shown.visible, channelCount(plugin.channelLayout) >= 3);
    delete &shown;
    frame->postEvent(event::kLayoutChanged);
    desktop->drainRelay();
}

TEST_F(FrameTest, ClosesWhileEventsAreUnderWay) {
    for (int round = 0; round < 20; ++round) {
        std::atomic<bool> stop{false};
        std::thread host([&] {
            for (int i = 0; !stop; ++i) plugin.gain.setValue(static_cast<float>(i % 30), kFromHost);
        });
        for (int i = 0; i < 20; ++i) {
            desktop->drainRelay();
            desktop->advance(20);
        }
        frame->commands().toggleMidiLearn();
        frame->bindings().control(1)->beginEndChange(gui::GesturePhase::Begin, 0);
        editor.take();
        shut();
        stop = true;
        host.join();
        EXPECT_EQ(static_cast<GenericPlugin&>(plugin).owner().listener(), nullptr);
        open();
    }
    // A window that dies under an open menu.
    desktop->choice = [&](gui::PopupMenu&) -> gui::MenuItem* {
        shut();
        return nullptr;
    };
    const gui::Point at = frame->presetsButton->windowBounds().origin() + gui::Point{5.0f, 5.0f};
    desktop->root->platformMouseDown(gui::kLeftPress, at, 0);
    desktop->root->platformMouseUp(gui::kLeftPress, at, 0);
    EXPECT_FALSE(desktop);
}

TEST(FrameWithAProcessor, TakesItsLevelsOverInEachFrame) {
    const FactoryHome home;
    test::Session session;
    Desktop desktop(800.0f, 480.0f);
    auto frame = std::make_unique<TestFrame>(desktop, session.host.model());
    // The input meter of the first channel, which sees what the host plays.
    const auto loudest = [&] {
        float most = -180.0f;
        LevelExchange& levels = session.host.model().levels();
        for (int i = 0; i < levels.levelCount(); ++i) {
            most = std::max(most, levels.level(i).value(wave::LevelSource::Current));
        }
        return most;
    };
    for (int i = 0; i < 200; ++i) {
        std::fill(session.samples.begin(), session.samples.end(), 0.5f);
        session.process();
    }
    const float before = loudest();
    desktop.advance(1000 / GenericPluginInterface::kFramesPerSecond + 1);
    EXPECT_GT(loudest(), before + 20.0f);
    // Another interface has taken the model: this one leaves it alone.
    Desktop second(800.0f, 480.0f);
    const TestFrame newer(second, session.host.model());
    frame.reset();
    EXPECT_NE(session.host.model().owner().listener(), nullptr);
}

}  // namespace
}  // namespace vanta::interface
