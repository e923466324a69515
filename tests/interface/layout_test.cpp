#include <fmt/format.h>
#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>

#include "gui/controls/knob.hpp"
#include "interface/layout/compact_form.hpp"
#include "interface/layout/regular_form.hpp"
#include "interface/layout/vanta_interface.hpp"
#include "tests/gui/pictures.hpp"
#include "tests/host/session.hpp"
#include "tests/interface/frame_rig.hpp"

namespace vanta::interface {
namespace {

constexpr int kForms = 2;
/// Set by menus or by the meter panel, which binds no controls.
const std::set<std::string> kWithoutControl{"Receive Midi",          "Loudness Time Scale",
                                            "Loudness Meter Scale",  "Loudness Meter Origin",
                                            "Loudness Meter Target", "Loudness Integrated Peak Time Scale",
                                            "Loudness Recording"};

/// The interface of an instance, in a window of the size that the model wants.
class LayoutTest : public ::testing::Test {
protected:
    void open(int row, ChannelLayout layout = kStereoLayout, float scale = 1.0f) {
        close();
        plugin.emplace(layout);
        plugin->settings().loaded = false;
        plugin->settings().interfaceLayout = row;
        plugin->statics().settings.showWelcomeHint = false;
        desktop = std::make_unique<Desktop>(static_cast<float>(plugin->interfaceWidth()),
                                            static_cast<float>(plugin->interfaceHeight()));
        desktop->setScale(scale);
        ui = std::make_unique<VantaInterface>(*desktop, *plugin);
        ui->attachEditor(&editor);
        ui->animator().running = false;
        desktop->drainRelay();
    }
    void close() {
        ui.reset();
        desktop.reset();
        plugin.reset();
    }
    ~LayoutTest() override { close(); }

    RegularForm& regular() { return dynamic_cast<RegularForm&>(ui->form()); }
    void set(AbstractPluginParameter& parameter, float value) {
        parameter.setValue(value, 0);
        desktop->drainRelay();
    }
    void resize(float width, float height) { ui->root().setSize(width, height); }
    void press(const gui::Control& control) {
        const gui::Rect at = control.windowBounds();
        const gui::Point middle{(at.left + at.right) / 2.0f, (at.top + at.bottom) / 2.0f};
        desktop->root->platformMouseMove(middle, 0);
        desktop->root->platformMouseDown(gui::kLeftPress, middle, 0);
        desktop->root->platformMouseUp(gui::kLeftPress, middle, 0);
        desktop->drainRelay();
    }
    gui::Button& command(Command which) { return *ui->commands().button(which); }

    FactoryHome home;
    TestEditor editor;
    std::optional<VantaPlugin> plugin;
    std::unique_ptr<Desktop> desktop;
    std::unique_ptr<VantaInterface> ui;
};

class EveryForm : public LayoutTest, public ::testing::WithParamInterface<int> {};

/// From outside to the control, and from the control to the parameter.
TEST_P(EveryForm, MovesParametersAndFollowsThem) {
    open(GetParam(), *findLayout("5.1"));
    for (int index = 0; index < plugin->parameterCount(); ++index) {
        AbstractPluginParameter& parameter = *plugin->parameterAt(index);
        SCOPED_TRACE(parameter.displayName);
        gui::ValueControl* control = ui->bindings().control(index);
        const bool isOfRegular = &parameter == &plugin->displayMode || &parameter == &plugin->showAdvanced;
        ASSERT_EQ(control != nullptr, !kWithoutControl.contains(parameter.displayName) &&
                                          !(isOfRegular && ui->form().isCompact()));
        if (!control) continue;
        for (const float target : {parameter.maximum(), parameter.minimum()}) {
            set(parameter, target);
            EXPECT_EQ(control->value,
                      target == parameter.maximum() ? control->maximum.value() : control->minimum.value());
        }
        control->changeTo(control->maximum);
        EXPECT_EQ(parameter.value(), parameter.maximum());
        control->changeTo(control->minimum);
        EXPECT_EQ(parameter.value(), parameter.minimum());
    }
}

/// What can be seen of a control can be clicked: nothing lies on top of it, and no parent hides it.
TEST_P(EveryForm, LetsThePointerReachEveryBoundControl) {
    open(GetParam());
    set(plugin->showAdvanced, 1.0f);
    ui->root().onResize.raise(&ui->root());
    for (int index = 0; index < plugin->parameterCount(); ++index) {
        gui::ValueControl* control = ui->bindings().control(index);
        if (!control || !control->isShown()) continue;
        const gui::Rect at = control->windowBounds();
        const gui::Point middle{(at.left + at.right) / 2.0f, (at.top + at.bottom) / 2.0f};
        if (dynamic_cast<gui::Switch*>(control)) continue;  // its middle is groove
        EXPECT_EQ(ui->parameterAt(middle), index) << plugin->parameterAt(index)->displayName;
        EXPECT_TRUE(at.left >= 0.0f && at.right <= ui->root().localBounds().right);
    }
}

INSTANTIATE_TEST_SUITE_P(Forms, EveryForm, ::testing::Range(0, kForms));

TEST_F(LayoutTest, BarsLeaveTheirButtonsToTheCornersOfAWideWindow) {
    open(1);
    gui::Control* const bottomBar = ui->bottomBar().resizeButton().parent;
    gui::Control* const topBar = command(Command::FullScreen).parent;
    resize(1059.5f, 640.0f);
    EXPECT_EQ(ui->bottomBar().resizeButton().parent, bottomBar);
    EXPECT_EQ(command(Command::FullScreen).parent, topBar);
    EXPECT_FALSE(ui->bottomBar().corner().visible);
    EXPECT_EQ(topBar->bounds.value(), gui::Rect::ofSize(404.0f, 9.0f, 548.0f, 20.0f));
    resize(1060.0f, 640.0f);
    EXPECT_EQ(ui->bottomBar().resizeButton().parent, &ui->bottomBar().corner());
    EXPECT_EQ(ui->bottomBar().resizeButton().bounds.value().origin(), (gui::Point{40.0f, 5.0f}));
    EXPECT_EQ(command(Command::FullScreen).parent, &ui->root());
    EXPECT_EQ(command(Command::FullScreen).bounds.value().origin(), (gui::Point{1036.0f, 9.0f}));
    EXPECT_TRUE(ui->bottomBar().corner().visible);
    resize(800.0f, 480.0f);
    EXPECT_EQ(ui->bottomBar().resizeButton().parent, bottomBar);
    EXPECT_EQ(ui->bottomBar().resizeButton().windowBounds(), gui::Rect::ofSize(774.0f, 457.0f, 20.0f, 20.0f));
}

TEST_F(LayoutTest, CrossingToCompactAndBackBuildsTheOtherFormAndKeepsAllValues) {
    open(1);
    set(plugin->gain, 12.0f);
    const std::vector<float> before = plugin->parameterValues();
    for (const int row : {0, 2, 0, 3}) {
        ui->sizing().choose(row);
        EXPECT_EQ(ui->form().isCompact(), row == 0);
        EXPECT_EQ(ui->root().localBounds().width(), static_cast<float>(plugin->interfaceWidth()));
        EXPECT_EQ(plugin->parameterValues(), before);
        const gui::ValueControl* gain = ui->bindings().control(plugin->gain.index());
        ASSERT_NE(gain, nullptr);
        EXPECT_EQ(dynamic_cast<const gui::Knob*>(gain) != nullptr, row == 0);
        EXPECT_GT(gain->value, gain->minimum);
    }
}

TEST_F(LayoutTest, StyleSafeHasTimesOfItsOwn) {
    for (const int row : {0, 1}) {
        open(row);
        const int safe = static_cast<int>(plugin->style.maximum());
        for (const int style : {safe, 0}) {
            set(plugin->style, static_cast<float>(style));
            for (const int index : {plugin->lookahead.index(), plugin->attack.index()}) {
                EXPECT_EQ(ui->bindings().control(index)->enabled, style != safe);
                EXPECT_EQ(ui->bindings().control(index)->alpha, style == safe ? 90 : 255);
            }
            EXPECT_TRUE(ui->bindings().control(plugin->release.index())->enabled);
        }
    }
}

TEST_F(LayoutTest, AdvancedPanelTurnsBackFromWhereItHasCome) {
    open(1);
    set(plugin->showAdvanced, 0.0f);
    ui->root().onResize.raise(&ui->root());
    AdvancedPanel& advanced = regular().advanced();
    const auto left = [&] { return advanced.panel().bounds.value().left; };
    EXPECT_EQ(left(), -500.0f);
    press(advanced.tab());
    EXPECT_TRUE(plugin->showAdvanced.mapped());
    ui->animator().running = true;
    const auto pass = [&](int milliseconds) {
        for (int at = 0; at < milliseconds; at += 25) {
            desktop->advance(25);
            desktop->tickFrameTimers();
        }
    };
    pass(250);
    const float halfWay = left();
    EXPECT_GT(halfWay, -499.0f);
    EXPECT_LT(halfWay, -20.0f);
    press(advanced.tab());
    EXPECT_FALSE(plugin->showAdvanced.mapped());
    desktop->tickFrameTimers();
    EXPECT_LE(left(), halfWay) << "no jump to the other end";
    EXPECT_GT(left(), -500.0f);
    pass(600);
    EXPECT_EQ(left(), -500.0f);
    ui->commands().run(Command::Undo);
    desktop->drainRelay();
    pass(600);
    EXPECT_EQ(left(), -20.0f);
    press(advanced.heading());
    pass(600);
    EXPECT_EQ(left(), -500.0f);
}

TEST_F(LayoutTest, SurroundHasSwitchesForItsChannelsAndTheWholeRangeOfTheLink) {
    for (const bool isSurround : {false, true}) {
        open(1, isSurround ? *findLayout("5.1") : kStereoLayout);
        const ChannelLinkGroup& link = regular().advanced().channelLink();
        EXPECT_EQ(link.center().visible, isSurround);
        EXPECT_EQ(link.lfe().visible, isSurround);
        set(plugin->channelLinkTransients, 0.5f);
        EXPECT_EQ(link.transients().value, isSurround ? 18000 : 36000);
        EXPECT_LE(regular().card().bounds().right,
                  regular().panel().meter(VantaMeterPanel::Output).windowBounds().left + 2.0f);
    }
}

/// Where a window is too small for both, the loudness meter and the card make way, and come back.
TEST_F(LayoutTest, AdvancedPanelCoversNoControlOfAnyLayout) {
    for (const char* layout : {"stereo", "5.1", "7.1.2"}) {
        for (int size = 1; size <= 3; ++size) {
            SCOPED_TRACE(fmt::format("{} {}", layout, size));
            open(size, *findLayout(layout));
            set(plugin->meterScale, plugin->meterScale.maximum());
            ui->root().onResize.raise(&ui->root());  // where motions would end
            VantaMeterPanel& panel = regular().panel();
            const std::vector<const gui::Control*> others{&panel.meter(VantaMeterPanel::Loudness),
                                                          &panel.integratedLabel(),
                                                          &panel.unitLabel(),
                                                          &panel.loudnessTimeButton(),
                                                          &panel.targetButton(),
                                                          &regular().card().backdrop()};
            const gui::Rect meter = others.front()->windowBounds(), card = others.back()->windowBounds();
            set(plugin->showAdvanced, 1.0f);
            ui->root().onResize.raise(&ui->root());
            ASSERT_EQ(regular().advanced().covered().size(), 2u);
            const gui::Rect shown = regular().advanced().covered().front();
            EXPECT_TRUE(gui::isSame(shown, regular().advanced().panel().windowBounds().intersected(shown)));
            for (const gui::Control* other : others) {
                for (const gui::Rect& area : regular().advanced().covered())
                    EXPECT_TRUE(area.intersected(other->windowBounds()).isEmpty());
            }
            const LevelMeterDisplay& output = panel.meter(VantaMeterPanel::Output);
            const gui::Rect bars = output.windowBounds(), over = others.back()->windowBounds();
            if (regular().card().isOverMeters()) {
                EXPECT_LT(bars.bottom - output.labelInset, over.top) << "the card covers letters";
            }
            set(plugin->showAdvanced, 0.0f);
            EXPECT_TRUE(gui::isSame(others.front()->windowBounds(), meter));
            EXPECT_TRUE(gui::isSame(others.back()->windowBounds(), card));
        }
    }
}

TEST_F(LayoutTest, TextsSayWhatTheControlsStandFor) {
    open(1);
    set(plugin->gain, 6.2f);
    set(plugin->dithering, 5.0f);
    EXPECT_EQ(regular().gain().caption().text.value(), "6.2");
    EXPECT_EQ(ui->bottomBar().dither().button().text().text.value(), "24 Bits (O)");
    set(plugin->dithering, 0.0f);
    EXPECT_EQ(ui->bottomBar().dither().button().text().text.value(), "Off");
    set(plugin->outputLevel, -1.04f);
    EXPECT_EQ(shortOutputLevel(*plugin), "-1.0 dBTP");
    set(plugin->truePeakLimiting, 0.0f);
    EXPECT_EQ(shortOutputLevel(*plugin), "-1.0 dB");
}

/// Opened, used and closed again and again, in whatever state it is.
TEST_F(LayoutTest, OpensAndClosesInEveryState) {
    for (int i = 0; i < 24; ++i) {
        open(i % 4, i % 3 == 0 ? *findLayout("5.1") : i % 3 == 1 ? kMonoLayout : kStereoLayout);
        set(plugin->meterScale, static_cast<float>(i % 7));
        set(plugin->displayMode, static_cast<float>(i % 5));
        if (i % 2) ui->midiLearn().midiLearnMode = true;
        if (i % 4) press(regular().advanced().tab());
        desktop->advance(100);
        desktop->tickFrameTimers();
    }
}

/// The sound goes on through it, in all sizes.
TEST(LayoutWithAudio, OpensAndCloses) {
    const FactoryHome home;
    test::Session session;
    auto& plugin = static_cast<VantaPlugin&>(session.host.model());
    plugin.settings().loaded = false;
    std::atomic<bool> stop{false};
    std::thread audio([&] {
        for (int i = 0; !stop; ++i) {
            session.host.automate(0, i % 30);
            session.process();
        }
    });
    for (int round = 0; round < 40; ++round) {
        plugin.settings().interfaceLayout = round % 4;
        Desktop desktop(static_cast<float>(plugin.interfaceWidth()),
                        static_cast<float>(plugin.interfaceHeight()));
        VantaInterface ui(desktop, plugin);
        for (int frames = 0; frames < 4; ++frames) {
            desktop.advance(70);
            desktop.drainRelay();
        }
        EXPECT_TRUE(ui.animator().running);
    }
    stop = true;
    audio.join();
    EXPECT_EQ(session.host.model().owner().listener(), nullptr);
}

struct Look {
    const char* name;
    int row;
    bool isAdvanced;
};
class LayoutPictures : public LayoutTest, public ::testing::WithParamInterface<Look> {};

TEST_P(LayoutPictures, AreAsReviewed) {
    open(GetParam().row);
    set(plugin->gain, 6.2f);
    set(plugin->showAdvanced, GetParam().isAdvanced ? 1.0f : 0.0f);
    ui->root().onResize.raise(&ui->root());
    test::expectPicture(*desktop->picture(), test::atScale(GetParam().name, 1.0f), 2);
}

INSTANTIATE_TEST_SUITE_P(Looks, LayoutPictures,
                         ::testing::Values(Look{"layout-compact", 0, false}, Look{"layout-small", 1, true},
                                           Look{"layout-large", 3, false}),
                         [](const auto& look) { return std::string(look.param.name).substr(7); });

}  // namespace
}  // namespace vanta::interface
