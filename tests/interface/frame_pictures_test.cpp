#include <gtest/gtest.h>

#include "interface/controls/gain_slider.hpp"
#include "tests/gui/pictures.hpp"
#include "tests/interface/frame_rig.hpp"

namespace vanta::interface {
namespace {

class FramePictures : public ::testing::TestWithParam<float> {};

/// Value display, sheet of MIDI learn, hint and dialog, one below the other.
TEST_P(FramePictures, PanelsOnOneSheet) {
    const FactoryHome home;
    VantaPlugin plugin(kStereoLayout);
    plugin.gain.setValue(6.2f, 0);
    Desktop desktop(800.0f, 480.0f);
    desktop.setScale(GetParam());
    TestFrame frame(desktop, plugin);
    frame.animator().running = false;
    ASSERT_TRUE(frame.setBackground("Background.png"));
    EXPECT_FALSE(frame.setBackground("NoSuchPicture.png"));
    auto& slider =
        frame.factory().add<GainSlider>({740, 130, 788, 440}, &frame.animator(), frame.styles().gainSlider());
    slider.maximum = 100;
    slider.value = 59;
    slider.caption().text = std::string("6.2");
    desktop.drainRelay();
    plugin.statics().controllers.assign(21, 0);
    plugin.statics().controllers.assign(74, 3);
    frame.valueDisplay().show(*frame.bindings().control(18));
    frame.valueDisplay().alpha = 255;
    test::expectPicture(*desktop.picture(), test::atScale("interface-hint", GetParam()), 2);

    frame.showInHintWindow({}, HelpHints::kAlways);
    frame.valueDisplay().hide();
    gui::MenuItem* about = findItem(frame.helpMenu().refill(), "About");
    about->picked();
    desktop.drainRelay();
    test::expectPicture(*desktop.picture(), test::atScale("interface-about", GetParam()), 2);
    desktop.root->platformKey({gui::Key::Return, 0, 0});
    desktop.drainRelay();

    frame.midiLearn().midiLearnMode = true;
    frame.midiLearn().overlay()->alpha = 255;
    frame.midiLearn().setTarget(3);
    test::expectPicture(*desktop.picture(), test::atScale("interface-midi-learn", GetParam()), 2);
}

INSTANTIATE_TEST_SUITE_P(Scales, FramePictures, ::testing::Values(1.0f, 2.0f));

}  // namespace
}  // namespace vanta::interface
