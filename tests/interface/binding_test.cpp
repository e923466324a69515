#include <gmock/gmock.h>

#include "gui/controls/edit_field.hpp"
#include "gui/controls/text_editor.hpp"
#include "interface/binding/control_proxy.hpp"
#include "interface/controls/float_value_label.hpp"
#include "interface/controls/position_curves.hpp"
#include "tests/host/session.hpp"
#include "tests/interface/frame_rig.hpp"

namespace vanta::interface {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class BindingTest : public ::testing::Test {
protected:
    BindingTest() { frame.attachEditor(&editor); }

    gui::ValueControl& control(int index) { return *frame.bindings().control(index); }
    AbstractPluginParameter& parameter(int index) { return *plugin.parameterAt(index); }
    bool isContinuous(int index) { return parameter(index).kind() == AbstractPluginParameter::Kind::Float; }
    void drain() { desktop.drainRelay(); }
    /// A knob's pointer, from its middle upwards.
    void drag(gui::ValueControl& knob, float up) {
        const gui::Rect at = knob.windowBounds();
        const gui::Point middle{(at.left + at.right) / 2.0f, (at.top + at.bottom) / 2.0f};
        desktop.root->platformMouseMove(middle, 0);
        desktop.root->platformMouseDown(gui::kLeftPress, middle, 0);
        desktop.root->platformMouseMove({middle.x, middle.y - up}, 0);
    }
    void release(gui::ValueControl& knob) {
        desktop.root->platformMouseUp(gui::kLeftPress, knob.toWindow(gui::Point{29.0f, -11.0f}), 0);
    }

    FactoryHome home;
    VantaPlugin plugin{kStereoLayout};
    Desktop desktop{800.0f, 480.0f};
    TestEditor editor;
    TestFrame frame{desktop, plugin};
};

TEST_F(BindingTest, EveryParameterMovesItsControlAndBack) {
    for (int index = 0; index < plugin.parameterCount(); ++index) {
        SCOPED_TRACE(parameter(index).name());
        gui::ValueControl& bound = control(index);
        EXPECT_EQ(bound.steps(), isContinuous(index) ? 36000 : static_cast<int>(parameter(index).maximum()));
        EXPECT_EQ(bound.groupIndex, index);
        EXPECT_FALSE(bound.hint.value().empty());
        EXPECT_FALSE(bound.accessibleName.value().empty());
        for (const float share : {1.0f, 0.0f, 0.4f}) {
            const float value = parameter(index).denormalize(share);
            parameter(index).setValue(value, kFromHost);
            drain();
            EXPECT_NEAR(bound.normalized(), parameter(index).normalize(value), 0.5f / 36000.0f);
            EXPECT_EQ(bound.valueText(), parameter(index).text(value))
                << "as exactly as the parameter has it";
        }
        for (const int target : {bound.maximum.value(), bound.minimum.value(), bound.maximum.value() / 3}) {
            editor.take();
            if (target == bound.value) continue;
            bound.changeTo(target);
            const float wanted = isContinuous(index) ? parameter(index).denormalize(bound.normalized())
                                                     : static_cast<float>(target);
            EXPECT_NEAR(parameter(index).value(), wanted, 1e-6f * std::abs(wanted));
            const std::string id = std::to_string(index);
            EXPECT_THAT(editor.log, ElementsAre("begin " + id, "move " + id, "end " + id));
            drain();
            EXPECT_EQ(bound.value, target) << "the model's echo moves nothing";
        }
        const std::string typed = parameter(index).text(parameter(index).maximum());
        float meant = 0.0f;
        parameter(index).parseText(typed, &meant);
        EXPECT_TRUE(bound.commitText(typed));
        EXPECT_FLOAT_EQ(parameter(index).value(), meant);
        EXPECT_FALSE(bound.commitText("nonsense"));
    }
    EXPECT_THAT(desktop.messages, IsEmpty());
}

TEST_F(BindingTest, AGestureWinsOverWhatComesInMeanwhile) {
    gui::ValueControl& gain = control(0);
    drag(gain, 40.0f);
    const int held = gain.value;
    EXPECT_GT(held, 0);
    plugin.gain.setValue(29.0f, kFromHost);
    drain();
    EXPECT_EQ(gain.value, held) << "automation does not pull the knob from under the pointer";
    release(gain);
    drain();
    EXPECT_EQ(gain.valueText(), plugin.gain.text(29.0f)) << "afterwards it shows what holds";
}

TEST_F(BindingTest, AnEchoOfTheHostThatComesLateMovesNoKnob) {
    test::Session session(test::InProcessHost::Answers::OnIdle);
    Desktop other(800.0f, 480.0f);
    TestFrame hosted(other, session.host.model());
    gui::ValueControl& gain = *hosted.bindings().control(0);
    gain.beginEndChange(gui::GesturePhase::Begin, 0);
    for (const int step : {9000, 9000, -3000}) {
        const int before = gain.value;
        gain.beginEndChange(gui::GesturePhase::Change, step);
        session.process();
        session.host.idle();  // answers
        other.drainRelay();
        EXPECT_EQ(gain.value, before + step);
    }
    gain.beginEndChange(gui::GesturePhase::End, 0);
    session.host.idle();
    session.process();
    other.drainRelay();
    EXPECT_EQ(gain.value, 15000);
    EXPECT_FLOAT_EQ(session.audio(0).value(), session.model(0).value());
    EXPECT_TRUE(session.host.model().undoHistory().canUndo());
}

TEST_F(BindingTest, OneGestureIsOneStepAndNoneIfItEndsWhereItBegan) {
    gui::ValueControl& gain = control(0);
    gain.beginEndChange(gui::GesturePhase::Begin, 0);
    for (int i = 0; i < 200; ++i) gain.beginEndChange(gui::GesturePhase::Change, 30);
    EXPECT_EQ(plugin.undoHistory().undoCount(), 0);
    gain.beginEndChange(gui::GesturePhase::End, 0);
    EXPECT_EQ(plugin.undoHistory().undoCount(), 1);
    gain.beginEndChange(gui::GesturePhase::Begin, 0);
    for (const int step : {30, 30, -60}) gain.beginEndChange(gui::GesturePhase::Change, step);
    gain.beginEndChange(gui::GesturePhase::End, 0);
    EXPECT_EQ(plugin.undoHistory().undoCount(), 1);
}

TEST_F(BindingTest, AParameterHasOneControlAndAGestureEndsWithIt) {
    gui::ValueControl& first = control(0);
    first.changeTo(1000);
    frame.bindControl(0, &first);
    frame.bindControl(-1, &first);
    EXPECT_EQ(control(0).value, 1000) << "a second time is harmless";
    auto& second = frame.factory().addKnob({300, 380}, KnobStyle::Small);
    frame.bindControl(0, &second);
    EXPECT_EQ(first.groupIndex, -1);
    EXPECT_EQ(second.value, 1000);
    first.changeTo(5);
    EXPECT_EQ(second.value, 1000);
    drain();
    EXPECT_EQ(editor.refreshed, 1) << "however many were bound, the host looks once";
    editor.take();
    second.beginEndChange(gui::GesturePhase::Begin, 0);
    delete &second;
    EXPECT_THAT(editor.take(), ElementsAre("begin 0", "end 0"));
    EXPECT_EQ(frame.bindings().control(0), nullptr);
    plugin.gain.setValue(3.0f, 0);
    drain();
    EXPECT_EQ(frame.parameterAt({60, 119}), -1);
    frame.bindControl(0, &first);
    EXPECT_EQ(frame.parameterAt({39, 119}), 0);
    frame.bindControl(0, nullptr);
    EXPECT_EQ(first.listener, nullptr);
}

TEST_F(BindingTest, DuplicatesHandTheirUsersToTheBoundControl) {
    const int unity = plugin.unityGain.index(), level = plugin.outputLevel.index();
    auto& button = frame.factory().addButton<gui::ToggleButton>({300, 380, 340, 400}, ButtonStyle::Bar);
    auto& knob = frame.factory().addKnob({400, 380}, KnobStyle::Small);
    ControlProxy buttonProxy(button, control(unity));
    ControlProxy knobProxy(knob, control(level));
    desktop.root->platformMouseDown(gui::kLeftPress, {310, 390}, 0);
    desktop.root->platformMouseUp(gui::kLeftPress, {310, 390}, 0);
    EXPECT_TRUE(plugin.unityGain.mapped());
    EXPECT_THAT(editor.take(), ElementsAre("begin " + std::to_string(unity), "move " + std::to_string(unity),
                                           "end " + std::to_string(unity)));
    knob.changeTo(9000);
    EXPECT_EQ(control(level).value, 9000);
    EXPECT_EQ(plugin.undoHistory().undoCount(), 2);
    plugin.unityGain.setValue(0.0f, 0);
    drain();
    EXPECT_FALSE(button.on);
    delete &control(level);
    knob.changeTo(5);
}

TEST_F(BindingTest, LinkedParametersMoveTogether) {
    const int a = plugin.attack.index(), b = plugin.release.index();
    parameter(a).setValue(0.2f, 0);
    parameter(b).setValue(0.5f, 0);
    drain();
    frame.bindings().links().link(a, b);
    control(a).beginEndChange(gui::GesturePhase::Begin, 0);
    EXPECT_EQ(frame.valueDisplay().nameLine(1), "Release") << "what moves along is shown as well";
    control(a).beginEndChange(gui::GesturePhase::Change, 3600);
    EXPECT_NEAR(parameter(a).value(), 0.3f, 1e-4f);
    EXPECT_NEAR(parameter(b).value(), 0.6f, 1e-4f);
    control(a).beginEndChange(gui::GesturePhase::Change, 36000);
    EXPECT_NEAR(parameter(b).value(), 1.0f, 1e-6f);
    control(a).beginEndChange(gui::GesturePhase::End, 0);
    EXPECT_EQ(plugin.undoHistory().undoCount(), 1) << "both in one step";
    frame.bindings().links().leave(b);
    control(a).changeTo(0);
    EXPECT_NEAR(parameter(b).value(), 1.0f, 1e-6f);
    const int first = plugin.filterDcOffset.index(), second = plugin.dithering.index();
    frame.bindings().links().link(first, second);
    EXPECT_EQ(frame.bindings().requestChange(control(first), 3), 3) << "the other goes on";
    EXPECT_EQ(frame.bindings().requestChange(control(first), 9), 5);
}

TEST_F(BindingTest, LevelCurvesRiseAndReturn) {
    using Curve = float (*)(float);
    for (const auto& [toNormal, fromNormal] : {std::pair<Curve, Curve>{levelToNormal, levelFromNormal},
                                               std::pair<Curve, Curve>{gainToNormal, gainFromNormal}}) {
        float last = -1.0f;
        for (int i = 0; i <= 1000; ++i) {
            const float position = static_cast<float>(i) / 1000.0f;
            EXPECT_GT(toNormal(position), last);
            EXPECT_NEAR(fromNormal(toNormal(position)), position, 1e-5f);
            last = toNormal(position);
        }
    }
    gui::ValueControl& level = control(plugin.outputLevel.index());
    level.toNormal = levelToNormal;
    level.fromNormal = levelFromNormal;
    frame.bindControl(plugin.outputLevel.index(), &level);
    level.changeTo(18000);
    EXPECT_NEAR(plugin.outputLevel.value(), -2.0f, 1e-3f);
    gui::ValueControl& gain = control(0);
    gain.toNormal = gainToNormal;
    gain.fromNormal = gainFromNormal;
    frame.bindControl(0, &gain);
    gain.changeTo(18000);
    EXPECT_NEAR(plugin.gain.value(), 2.0f, 1e-3f) << "as fine above 0 as Output Level is below";
}

TEST_F(BindingTest, ValueDisplayComesWithThePointerAndTypes) {
    ParameterValueDisplay& display = frame.valueDisplay();
    desktop.root->platformMouseMove({39, 119}, 0);
    EXPECT_FALSE(display.isShowing());
    desktop.advance(ParameterValueDisplay::kShowMs + 100);
    ASSERT_TRUE(display.isShowing());
    EXPECT_EQ(display.nameLine(0), "Gain");
    EXPECT_EQ(display.valueLine(0), plugin.gain.text(0.0f));
    plugin.gain.setValue(12.5f, 0);
    drain();
    EXPECT_EQ(display.valueLine(0), plugin.gain.text(12.5f));
    const gui::Point onValue = display.toWindow(display.valueBounds(0)).origin() + gui::Point{20.0f, 5.0f};
    desktop.root->platformMouseMove(onValue, 0);
    desktop.advance(2 * ParameterValueDisplay::kHideMs);
    ASSERT_TRUE(display.isShowing()) << "the pointer can reach it";
    desktop.root->platformMouseDown(gui::kLeftPress, onValue, 0);
    desktop.root->platformMouseUp(gui::kLeftPress, onValue, 0);
    desktop.root->platformMouseDown(gui::kLeftPress, onValue, gui::modifier::kDoubleClick);
    desktop.root->platformMouseUp(gui::kLeftPress, onValue, 0);
    ASSERT_TRUE(display.editor() && display.editor()->isActive());
    for (const char c : std::string("7.25")) desktop.root->platformKey({gui::Key::Character, 0, char32_t(c)});
    desktop.root->platformKey({gui::Key::Return, 0, 0});
    EXPECT_FLOAT_EQ(plugin.gain.value(), 7.25f);
    EXPECT_EQ(plugin.undoHistory().undoCount(), 1) << "what is typed can be taken back";
    desktop.root->platformMouseMove({700, 470}, 0);
    desktop.advance(2 * ParameterValueDisplay::kHideMs);
    EXPECT_FALSE(display.isShowing());
    control(0).doubleClick();
    EXPECT_TRUE(display.editor()->isActive()) << "or on the control itself";
    delete &control(0);
    EXPECT_FALSE(display.isShowing());
    EXPECT_FALSE(display.editor()->isActive());
}

TEST_F(BindingTest, ANumberIsDraggedSteppedAndTyped) {
    auto& label = frame.factory().add<FloatValueLabel>({300, 380, 360, 400}, frame.gestures(), plugin.gain);
    label.precision = 2;
    label.dragScale = 0.01f;
    plugin.gain.setValue(6.0f, 0);
    label.refresh();
    EXPECT_EQ(label.shownText(), "6.00");
    desktop.root->platformMouseDown(gui::kLeftPress, {320, 390}, 0);
    desktop.root->platformMouseMove({320, 388}, 0);
    EXPECT_FLOAT_EQ(plugin.gain.value(), 6.0f) << "a hand trembles";
    desktop.root->platformMouseMove({320, 370}, 0);
    EXPECT_NEAR(plugin.gain.value(), 9.0f, 1e-4f) << "20 units are a tenth of the range";
    desktop.root->platformMouseUp(gui::kLeftPress, {320, 370}, 0);
    EXPECT_THAT(editor.take(), ElementsAre("begin 0", "move 0", "end 0"));
    label.takeFocus();
    desktop.root->platformKey({gui::Key::Down, 0, 0});
    EXPECT_EQ(label.shownText(), "8.90");
    const auto click = [&] {
        desktop.root->platformMouseDown(gui::kLeftPress, {320, 390}, 0);
        desktop.root->platformMouseUp(gui::kLeftPress, {320, 390}, 0);
    };
    click();
    EXPECT_TRUE(label.isArmed());
    desktop.advance(5000);
    EXPECT_FALSE(label.isArmed());
    click();
    click();
    ASSERT_TRUE(label.editor() && label.editor()->isActive());
    for (const char c : std::string("99 dB"))
        desktop.root->platformKey({gui::Key::Character, 0, char32_t(c)});
    desktop.root->platformKey({gui::Key::Return, 0, 0});
    EXPECT_EQ(label.shownText(), "30.00") << "limited to the range";
    label.showPlus = true;
    EXPECT_EQ(label.shownText(), "+30.00");
    desktop.root->platformMouseDown(gui::kLeftPress, {320, 390}, 0);
    editor.take();
    delete &label;
    EXPECT_THAT(editor.take(), ElementsAre("end 0"));
}

}  // namespace
}  // namespace vanta::interface
