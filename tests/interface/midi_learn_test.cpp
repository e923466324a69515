#include <gmock/gmock.h>

#include "tests/host/session.hpp"
#include "tests/interface/frame_rig.hpp"

namespace vanta::interface {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

class MidiLearnTest : public ::testing::Test {
protected:
    MidiLearnTest() {
        desktop.drainRelay();
        frame.showInHintWindow({}, HelpHints::kAlways);
    }
    /// A user turns a controller while audio runs.
    void turn(int controller, int value) {
        session.host.sendMidi(
            0, {0xB0, static_cast<std::uint8_t>(controller), static_cast<std::uint8_t>(value)});
        session.process();
        session.host.idle();
        desktop.drainRelay();
        session.process();
        session.host.idle();
        desktop.drainRelay();
    }
    int controllerOf(int parameter) {
        return session.host.model().statics().controllers.controllerOf(parameter);
    }
    void pressOn(const gui::Control& control) {
        const gui::Rect at = control.windowBounds();
        const gui::Point middle{(at.left + at.right) / 2.0f, (at.top + at.bottom) / 2.0f};
        desktop.root->platformMouseMove(middle, 0);
        desktop.root->platformMouseDown(gui::kLeftPress, middle, 0);
        desktop.root->platformMouseUp(gui::kLeftPress, middle, 0);
        desktop.drainRelay();
    }
    void choose(const std::string& text) {
        desktop.choice = [&](gui::PopupMenu& menu) { return findItem(menu, text); };
        frame.midiMenu().show({});
        desktop.drainRelay();
    }

    FactoryHome home;
    test::Session session;
    Desktop desktop{800.0f, 480.0f};
    TestFrame frame{desktop, session.host.model()};
};

TEST_F(MidiLearnTest, AControlIsLearnedByTouchingItAndMovingAController) {
    gui::Button& button = *frame.commands().button(Command::MidiLearn);
    turn(21, 64);
    EXPECT_EQ(controllerOf(0), -1);
    pressOn(button);
    ASSERT_TRUE(frame.midiLearn().midiLearnMode);
    EXPECT_TRUE(button.on);
    MidiLearnController& sheet = *frame.midiLearn().overlay();
    EXPECT_EQ(sheet.prompt(), "Click a control to activate it for MIDI Learn mode");
    turn(21, 65);
    EXPECT_THAT(listed(frame.midiMenu().refill()), Contains("  !(No Controllers)"))
        << "no target, nothing learned";
    pressOn(*frame.bindings().control(0));
    EXPECT_EQ(frame.midiLearn().learnTarget(), 0);
    EXPECT_EQ(sheet.prompt(), "Move a MIDI control to associate it to: Gain");
    EXPECT_EQ(session.model(0).value(), 0.0f) << "a press that moves nothing";
    turn(21, 66);
    EXPECT_EQ(controllerOf(0), 21);
    EXPECT_EQ(sheet.assignedController(), 21);
    EXPECT_TRUE(std::filesystem::exists(session.host.model().statics().controllerMap)) << "at each change";
    turn(21, 127);
    EXPECT_FLOAT_EQ(session.model(0).value(), 30.0f);
    EXPECT_EQ(frame.bindings().control(0)->value, 36000) << "and the knob follows";
    // A control that is used learns next; its press passes through.
    const int dc = 13;
    pressOn(*frame.bindings().control(dc));
    EXPECT_FLOAT_EQ(session.model(dc).value(), 1.0f);
    EXPECT_EQ(sheet.selectedTarget(), dc);
    turn(21, 0);
    EXPECT_EQ(controllerOf(dc), 21) << "a controller that is learned anew leaves its old target";
    EXPECT_EQ(controllerOf(0), -1);
    frame.gestures().set(2, 1.0f);
    EXPECT_EQ(frame.midiLearn().learnTarget(), 2) << "whatever moved last";
    turn(7, 1);
    EXPECT_TRUE(sheet.removeButton().visible);
    pressOn(sheet.removeButton());
    EXPECT_EQ(controllerOf(2), -1);
    EXPECT_FALSE(sheet.removeButton().visible);
    // Whatever is not learned is covered.
    const auto before = session.host.model().undoHistory().undoCount();
    pressOn(*frame.commands().button(Command::Undo));
    EXPECT_EQ(session.host.model().undoHistory().undoCount(), before);
    pressOn(sheet.closeButton());
    EXPECT_FALSE(frame.midiLearn().midiLearnMode);
    EXPECT_FALSE(button.on);
    EXPECT_EQ(frame.midiLearn().learnTarget(), -1);
    turn(9, 1);
    EXPECT_THAT(listed(frame.midiMenu().refill()), Contains("  CC 21: Filter DC Offset"));
    frame.midiLearn().midiLearnMode = true;
    desktop.root->platformKey({gui::Key::Escape, 0, 0});
    EXPECT_FALSE(frame.midiLearn().midiLearnMode);
}

TEST_F(MidiLearnTest, TheMenuEditsTheMap) {
    ControllerMapping& map = session.host.model().statics().controllers;
    EXPECT_THAT(listed(frame.midiMenu().refill()),
                ElementsAre("*Enable MIDI", "-", "Clear", "  !(No Controllers)", "Clear All", "-", "Revert",
                            "Save", "Load Factory Settings"));
    map.assign(5, 0);
    map.assign(6, 1);
    desktop.drainRelay();
    session.host.idle();
    desktop.drainRelay();
    choose("CC 5: Gain");
    EXPECT_EQ(map.targetOf(5), -1);
    EXPECT_EQ(map.targetOf(6), 1);
    choose("Clear All");
    EXPECT_EQ(map.targetOf(6), -1);
    map.assign(8, 3);
    choose("Save");
    map.clear();
    choose("Revert");
    EXPECT_EQ(map.targetOf(8), 3) << "as last saved";
    choose("Load Factory Settings");
    EXPECT_EQ(map.targetOf(8), -1);
    choose("Enable MIDI");
    const AbstractPluginParameter& receive = *session.host.model().receiveMidiParameter;
    EXPECT_FLOAT_EQ(receive.value(), 1.0f);
    EXPECT_EQ(listed(frame.midiMenu().refill()).front(), "Enable MIDI");
    EXPECT_EQ(session.host.model().undoHistory().undoCount(), 1);
    // The same menu opens on a control.
    int shown = 0;
    desktop.choice = [&](gui::PopupMenu&) { return ++shown, nullptr; };
    desktop.root->platformMouseDown(gui::kRightPress, {39, 119}, 0);
    desktop.root->platformMouseUp(gui::kRightPress, {39, 119}, 0);
    desktop.drainRelay();
    EXPECT_EQ(shown, 1);
}

TEST_F(MidiLearnTest, ControlsMayComeAndGoMeanwhile) {
    frame.midiLearn().midiLearnMode = true;
    MidiLearnController& sheet = *frame.midiLearn().overlay();
    frame.gestures().set(0, 1.0f);
    EXPECT_EQ(sheet.selectedTarget(), 0);
    delete frame.bindings().control(0);
    EXPECT_EQ(sheet.selectedTarget(), -1);
    frame.bindControl(0, &frame.factory().addKnob({300, 380}, KnobStyle::Small));
    frame.gestures().set(0, 2.0f);
    EXPECT_EQ(sheet.selectedTarget(), 0);
    frame.midiLearn().midiLearnMode = false;
    frame.midiLearn().midiLearnMode = true;
    desktop.advance(1000);
    desktop.drainRelay();
    ASSERT_TRUE(frame.midiLearn().overlay());
    frame.midiLearn().midiLearnMode = false;
    desktop.advance(1000);
    desktop.drainRelay();
}

}  // namespace
}  // namespace vanta::interface
