#include <gtest/gtest.h>

#include <memory>

#include "gui/controls/edit_field.hpp"
#include "gui/tree/root_control.hpp"
#include "tests/gui/pictures.hpp"
#include "tests/interface/panel_rig.hpp"

namespace vanta::interface {
namespace {

using gui::Rect;
using test::PanelRig;
using Panel = VantaMeterPanel;

void play(PanelRig& rig) {
    const int count = channelCount(rig.link.channelLayout());
    for (int c = 0; c < count; ++c) {
        const float at = static_cast<float>(c);
        rig.link.channel(c, ChannelLevel::OutputPeak).values = {-2.1f - at, -1.0f - at, -1.0f};
        rig.link.channel(c, ChannelLevel::RmsOrLoudness).values = {-13.4f - at, -11.0f - at, -10.0f};
        rig.link.channel(c, ChannelLevel::Gain).values = {-3.1f + 0.3f * at, -4.6f, -4.6f};
    }
    rig.link.combined[0].values = {-2.1f, -1.0f, -1.0f};
    rig.link.combined[2].values = {-3.1f, -4.6f, -4.6f};
    rig.link.loudness(ProgrammeLevel::Momentary).values = {-11.4f, -10.2f, -9.8f};
    rig.link.loudness(ProgrammeLevel::ShortTerm).values = {-12.8f, -12.0f, -11.9f};
    rig.link.loudness(ProgrammeLevel::Integrated).values = {-14.2f, -180.0f, -180.0f, 5.8f, -17.6f};
}

class MeterPanelPicture : public testing::TestWithParam<float> {
protected:
    void expectLooks(const std::string& name) {
        ui.drainRelay();
        ui.setScale(GetParam());
        ui.drainRelay();
        ui.advance(400);
        test::expectPicture(*ui.picture(), test::atScale(name, GetParam()), 1);
    }
    PanelRig& add(const Rect& at, ChannelLayout layout, Panel::Form form) {
        rigs.push_back(std::make_unique<PanelRig>(ui, animator, at, layout, form));
        play(*rigs.back());
        return *rigs.back();
    }
    void make(float width, float height) {
        ui.rootControl().bounds = Rect::ofSize(0.0f, 0.0f, width, height);
        animator = &ui.make<gui::Animator>();
        animator->framesPerSecond = 60;
        animator->running = true;
    }
    std::vector<std::unique_ptr<PanelRig>> rigs;
    gui::TestInterface ui{400.0f, 300.0f};
    gui::Animator* animator = nullptr;
};

TEST_P(MeterPanelPicture, RegularForm) {
    make(1000.0f, 480.0f);
    ui.loadBackdrop("Background");
    float x = 0.0f;
    const auto next = [&](float width, ChannelLayout layout, MeterScale scale) -> PanelRig& {
        PanelRig& rig = add(Rect::ofSize(x, 0.0f, width, 480.0f), layout, Panel::Form::Regular);
        rig.link.set(rig.link.table.meterScale, static_cast<float>(scale));
        x += width + 6.0f;
        return rig;
    };
    next(108.0f, kStereoLayout, MeterScale::Db48).link.channel(0, ChannelLevel::OutputPeak).values = {
        1.0f, 1.5f, 1.5f};
    next(108.0f, kStereoLayout, MeterScale::K14).link.combined[0].values[2] = 0.2f;
    PanelRig& integrated = next(306.0f, kStereoLayout, MeterScale::Loudness);
    integrated.link.set(integrated.link.table.loudnessMeterTarget, -14.0f);
    integrated.link.set(integrated.link.table.loudnessTimeScale, 2.0f);
    PanelRig& relative = next(386.0f, 6, MeterScale::Loudness);
    relative.link.set(relative.link.table.loudnessMeterTarget, -20.5f);
    relative.link.set(relative.link.table.loudnessMeterScale, 1.0f);
    relative.link.set(relative.link.table.loudnessMeterOrigin, 1.0f);
    relative.link.set(relative.link.table.loudnessRecording, 0.0f);
    relative.link.set(relative.link.table.unityGain, 1.0f);
    expectLooks("panel");
}

TEST_P(MeterPanelPicture, CompactForm) {
    make(655.0f, 290.0f);
    ui.loadBackdrop("SmallLayoutBackground");
    PanelRig& plain = add(Rect::ofSize(0.0f, -90.0f, 655.0f, 290.0f), kStereoLayout, Panel::Form::Compact);
    plain.link.set(plain.link.table.meterScale, static_cast<float>(MeterScale::K14));
    PanelRig& loud = add(Rect::ofSize(0.0f, 10.0f, 655.0f, 290.0f), kStereoLayout, Panel::Form::Compact);
    loud.link.set(loud.link.table.loudnessMeterTarget, -14.0f);
    loud.link.set(loud.link.table.meterScale, static_cast<float>(MeterScale::Loudness));
    expectLooks("panel-compact");
}

INSTANTIATE_TEST_SUITE_P(Scales, MeterPanelPicture, testing::Values(1.0f, 1.5f, 2.0f));

struct MeterPanel : testing::Test {
    MeterPanel() {
        animator.framesPerSecond = 50;
        animator.running = true;
    }
    void set(AbstractPluginParameter& parameter, float value) { rig.link.set(parameter, value); }
    void showLoudness() {
        set(p.meterScale, static_cast<float>(MeterScale::Loudness));
        ui.advance(400);
    }
    gui::MenuItem& item(gui::Menu& menu, int id) { return *menu.itemWithId(id); }
    /// By their texts, the checked ones with a star.
    static std::vector<std::string> itemsOf(gui::Menu& menu) {
        std::vector<std::string> texts;
        for (int i = 0; i < menu.itemCount(); ++i) {
            texts.push_back((menu.item(i)->checked ? "*" : "") + menu.item(i)->text.value());
        }
        return texts;
    }
    void type(const std::string& text) {
        item(panel.targetButton().menu(), LoudnessMenuItem::kCustom).picked();
        auto* field = dynamic_cast<gui::EditField*>(ui.root->focusedControl());
        ASSERT_NE(field, nullptr);
        field->line().setText(text);
        ui.root->platformKey({.key = gui::Key::Return});
        ui.drainRelay();
    }
    void click(gui::Control& control) {
        const Rect at = control.windowBounds();
        const gui::Point middle{(at.left + at.right) / 2.0f, (at.top + at.bottom) / 2.0f};
        ui.root->platformMouseDown(gui::kLeftPress, middle, 0);
        ui.root->platformMouseUp(gui::kLeftPress, middle, 0);
    }

    gui::TestInterface ui{800.0f, 480.0f};
    gui::Animator& animator = ui.make<gui::Animator>();
    PanelRig rig{ui, &animator, Rect::ofSize(0.0f, 0.0f, 800.0f, 480.0f), kStereoLayout,
                 Panel::Form::Regular};
    Panel& panel = *rig.panel;
    VantaParameters& p = rig.link.table;
};

TEST_F(MeterPanel, GrowsForTheLoudnessMeterAndBack) {
    EXPECT_EQ(panel.bounds.value(), (Rect{736.0f, 0.0f, 800.0f, 480.0f}));
    set(p.meterScale, static_cast<float>(MeterScale::Loudness));
    ui.advance(100);
    const float halfWay = panel.bounds.value().left;
    EXPECT_LT(halfWay, 736.0f);
    EXPECT_GT(halfWay, 538.0f);
    set(p.meterScale, static_cast<float>(MeterScale::K14));
    ui.advance(100);
    set(p.meterScale, static_cast<float>(MeterScale::Loudness));
    ui.advance(400);
    EXPECT_EQ(panel.bounds.value(), (Rect{538.0f, 0.0f, 800.0f, 480.0f}));
    EXPECT_TRUE(panel.meter(Panel::Loudness).isShown());
    rig.link.owner.channelLayout = *findLayout("7.1");
    panel.channelLayoutChanged();
    EXPECT_EQ(panel.bounds.value().width(), 2.0f * 96.0f + 198.0f);
    EXPECT_EQ(panel.meter(Panel::Output).barCount(), 8);
    set(p.meterScale, static_cast<float>(MeterScale::Db16));
    ui.advance(400);
    EXPECT_EQ(panel.bounds.value().width(), 192.0f);
    EXPECT_FALSE(panel.meter(Panel::Loudness).isShown());
}

TEST_F(MeterPanel, SharesItsScaleWithTheDisplay) {
    for (int scale = 0; scale < 7; ++scale) {
        set(p.meterScale, static_cast<float>(scale));
        ui.advance(400);
        LevelMeterDisplay& output = panel.meter(Panel::Output);
        for (const float level : {0.0f, -3.0f, -11.5f, -27.0f}) {
            const float inMeter = output.toWindow(gui::Point{0.0f, output.levelToPosition(level)}).y;
            EXPECT_FLOAT_EQ(inMeter, rig.display->levelToPosition(level)) << scale;
            EXPECT_FLOAT_EQ(inMeter, rig.grid->grid().positionOf(level)) << scale;
            LevelMeterDisplay& reduction = panel.meter(Panel::Reduction);
            EXPECT_FLOAT_EQ(reduction.toWindow(gui::Point{0.0f, reduction.levelToPosition(level)}).y,
                            inMeter);
        }
        const float lowest = output.positionToLevel(output.localBounds().height());
        const float expected = scale == 6 ? -41.0f : -rangeOf(static_cast<MeterScale>(scale));
        EXPECT_NEAR(lowest, expected, 0.01f) << scale;
    }
}

TEST_F(MeterPanel, ShowsLoudnessAroundItsTarget) {
    showLoudness();
    LevelMeterDisplay& meter = panel.meter(Panel::Loudness);
    const auto endsOf = [&] {
        return std::pair(std::round(meter.positionToLevel(1.0f)),
                         std::round(meter.positionToLevel(meter.localBounds().height() - 1.0f)));
    };
    EXPECT_EQ(endsOf(), std::pair(-14.0f, -41.0f));
    set(p.loudnessMeterTarget, -14.0f);
    set(p.loudnessMeterScale, 1.0f);
    EXPECT_EQ(endsOf(), std::pair(4.0f, -50.0f));
    EXPECT_STREQ(panel.scaleButton().text().text.value().c_str(), "Strm +18");
    EXPECT_EQ(panel.targetButton().text().text.value(), "-14 (Strm)");
    EXPECT_FLOAT_EQ(panel.integratedLabel().clipLevel.value(), -14.0f);
    set(p.loudnessMeterOrigin, 1.0f);
    EXPECT_EQ(panel.targetButton().text().text.value(), "0 (Strm)");
    EXPECT_FLOAT_EQ(panel.integratedLabel().clipLevel.value(), 0.0f);
    rig.link.loudness(ProgrammeLevel::ShortTerm).values[0] = -12.8f;
    ui.advance(400);
    EXPECT_EQ(panel.integratedLabel().shownText(), "+1.2");
    EXPECT_EQ(panel.integratedLabel().textColor.value(), panel.integratedLabel().clipColor.value());
    EXPECT_EQ(signedNumber(panel.loudnessGrid().format, -14.0f + panel.loudnessGrid().numberShift), "+0");
    set(p.loudnessMeterTarget, -20.5f);
    EXPECT_EQ(panel.targetButton().text().text.value(), "0 (-20.5)");
    EXPECT_EQ(panel.scaleButton().text().text.value(), "(-20.5) +18");
    set(p.loudnessMeterOrigin, 0.0f);
    EXPECT_EQ(panel.targetButton().text().text.value(), "-20.5");
    EXPECT_EQ(signedNumber(panel.loudnessGrid().format, panel.loudnessGrid().extras.value()[0]), "-2.5");
}

TEST_F(MeterPanel, OffersTargetsAndScales) {
    showLoudness();
    EXPECT_EQ(itemsOf(panel.targetButton().menu()),
              (std::vector<std::string>{"-9 LUFS (CD)", "-14 LUFS (Streaming)", "*-23 LUFS (EBU R128)",
                                        "-24 LUFS (ATSC A/85, TR-B32)", "-", "Custom..."}));
    EXPECT_EQ(itemsOf(panel.scaleButton().menu()),
              (std::vector<std::string>{"*EBU +9", "EBU +18", "-", "*Absolute", "Relative"}));
    item(panel.targetButton().menu(), -23).picked();
    EXPECT_TRUE(rig.link.choices.empty()) << "what it is already";
    item(panel.targetButton().menu(), -9).picked();
    using Choices = std::vector<std::pair<std::string, float>>;
    EXPECT_EQ(rig.link.choices, (Choices{{"Loudness Meter Target", -9.0f}}));
    EXPECT_EQ(itemsOf(panel.scaleButton().menu())[1], "CD +18");
    type("-18.5");
    EXPECT_EQ(p.loudnessMeterTarget.value(), -18.5f);
    EXPECT_EQ(itemsOf(panel.targetButton().menu()).back(), "*Custom...");
    EXPECT_EQ(itemsOf(panel.scaleButton().menu())[0], "*Target +9");
    type("as loud as it gets");
    EXPECT_EQ(p.loudnessMeterTarget.value(), -18.5f) << "what means nothing changes nothing";
    type("-23");
    EXPECT_EQ(itemsOf(panel.targetButton().menu())[2], "*-23 LUFS (EBU R128)");
    EXPECT_EQ(itemsOf(panel.targetButton().menu()).back(), "Custom...");
}

TEST_F(MeterPanel, PutsTheChosenLoudnessFirst) {
    showLoudness();
    rig.link.loudness(ProgrammeLevel::Integrated).values = {-15.5f, -180.0f, -180.0f, 5.8f, -17.6f};
    rig.link.loudness(ProgrammeLevel::Momentary).values[2] = -8.7f;
    rig.link.loudness(ProgrammeLevel::ShortTerm).values[2] = -9.9f;
    EXPECT_FALSE(panel.timeScaleButton().visible.value());
    panel.loudnessTimeButton().changeTo(2);
    EXPECT_EQ(rig.link.choices.back(), (std::pair<std::string, float>("Loudness Time Scale", 2.0f)));
    EXPECT_TRUE(panel.timeScaleButton().visible.value());
    EXPECT_EQ(panel.timeScaleButton().caption(), "Max M:");
    ui.advance(400);
    EXPECT_EQ(panel.integratedLabel().shownText(), "-15.5");
    EXPECT_EQ(panel.peakLabel(Panel::Loudness).shownText(), "-8.7");
    EXPECT_EQ(panel.meter(Panel::Loudness).channelOrder(0), 2);
    panel.timeScaleButton().changeTo(1);
    ui.advance(400);
    EXPECT_EQ(panel.peakLabel(Panel::Loudness).shownText(), "-9.9");
    EXPECT_EQ(panel.loudnessDisplay().rangeSource->value(wave::LevelSource::Range), 5.8f);
}

TEST_F(MeterPanel, ResetsAllMeasurementsAndPausesThem) {
    showLoudness();
    click(panel.resetButton());
    EXPECT_EQ(rig.link.loudness(ProgrammeLevel::Integrated).measurementResets, 1);
    EXPECT_EQ(rig.link.combined[static_cast<std::size_t>(ChannelLevel::OutputPeak)].peakResets, 1);
    EXPECT_EQ(rig.link.combined[static_cast<std::size_t>(ChannelLevel::Gain)].peakResets, 1);
    EXPECT_EQ(rig.link.restarts, 0);
    set(p.displayMode, static_cast<float>(VantaParameters::DisplayMode::Infinite));
    click(panel.resetButton());
    EXPECT_EQ(rig.link.restarts, 1);
    EXPECT_FALSE(panel.pauseButton().on.value());
    click(panel.pauseButton());
    EXPECT_EQ(rig.link.choices.back(), (std::pair<std::string, float>("Loudness Recording", 0.0f)));
    EXPECT_TRUE(panel.pauseButton().on.value());
    set(p.loudnessRecording, 1.0f);
    EXPECT_FALSE(panel.pauseButton().on.value());
}

TEST_F(MeterPanel, FollowsOutputLevelAndBypass) {
    LevelPeakLabel& label = panel.peakLabel(Panel::Output);
    set(p.outputLevel, -1.0f);
    set(p.truePeakMetering, 1.0f);
    EXPECT_FLOAT_EQ(label.targetLevel.value(), -1.0f);
    rig.link.combined[0].values[2] = -1.0f;
    ui.advance(400);
    EXPECT_EQ(label.textColor.value(), (gui::Color{117, 198, 17, 255}));
    rig.link.combined[0].values[2] = -0.7f;
    ui.advance(400);
    EXPECT_EQ(label.textColor.value(), label.targetColor.value());
    set(p.truePeakMetering, 0.0f);
    EXPECT_EQ(label.textColor.value(), (gui::Color{255, 255, 255, 128}));
    set(p.bypass, 1.0f);
    ui.advance(100);
    EXPECT_GT(panel.meter(Panel::Output).barAlpha.value(), 0);
    EXPECT_LT(panel.meter(Panel::Output).barAlpha.value(), 255);
    ui.advance(300);
    EXPECT_EQ(panel.meter(Panel::Reduction).barAlpha.value(), 0);
    EXPECT_EQ(label.alpha.value(), 0);
    set(p.bypass, 0.0f);
    ui.advance(400);
    EXPECT_EQ(label.alpha.value(), 255);
}

TEST_F(MeterPanel, StandsAnySize) {
    play(rig);
    for (const float scale : {2.0f, 6.0f}) {
        set(p.meterScale, scale);
        for (const float height : {1.0f, 60.0f, 100.0f, 101.0f, 102.0f, 124.0f, 160.0f, 2000.0f}) {
            rig.room.setSize(800.0f, height);
            ui.advance(400);
            ui.picture();
            EXPECT_EQ(panel.bounds.value().bottom, height);
            EXPECT_EQ(rig.grid->grid().ticks().empty(), height <= 101.0f) << height;
            EXPECT_TRUE(std::isfinite(panel.meter(Panel::Output).levelToPosition(-20.0f))) << height;
        }
    }
}

TEST_F(MeterPanel, CostsNothingWhileNothingMoves) {
    showLoudness();
    play(rig);
    ui.advance(600);
    ui.picture();
    ui.root->takeDirtyRect();
    ui.advance(1000);
    EXPECT_TRUE(ui.root->dirtyRect().isEmpty());
    EXPECT_NO_FATAL_FAILURE(delete &panel) << "in the middle of its life, as when the form changes";
    ui.advance(200);
    ui.picture();
}

}  // namespace
}  // namespace vanta::interface
