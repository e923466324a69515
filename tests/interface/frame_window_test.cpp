#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "gui/artwork/artwork_resources.hpp"
#include "tests/host/session.hpp"
#include "tests/interface/frame_rig.hpp"
#include "tests/interface/later.hpp"

// Last, as X's headers take common words away.
#include <X11/keysym.h>

#include "tests/gui/x11_server.hpp"

namespace vanta::interface {
namespace {

/// Painted in memory or, by a thread of its own, with OpenGL.
class FrameWindowTest : public ::testing::TestWithParam<bool> {
protected:
    FrameWindowTest() {
        addResources(gui::artworkResources());
        open();
    }
    void open() {
        gui::X11Settings settings;
        settings.width = 800.0f;
        settings.height = 480.0f;
        settings.displayName = server.name();
        if (GetParam()) settings.acceleration = gui::AccelerationMode::kForced | 1;
        ui = std::make_unique<gui::X11Interface>(settings);
        frame = std::make_unique<TestFrame>(*ui, session.host.model());
        ui->show();
        gui::settle(*ui);
        EXPECT_EQ(ui->accelerated, GetParam());
    }
    void shut() {
        frame.reset();
        ui.reset();
    }
    /// As the interface's own messages do it: what paints on another thread waits.
    template <typename Action>
    void held(const Action& action) {
        const gui::RootControl::MessageScope scope(ui->rootControl());
        action();
    }
    float gain() { return session.model(0).value(); }

    gui::X11Server& server = gui::X11Server::get();
    FactoryHome home;
    test::Session session;
    std::unique_ptr<gui::X11Interface> ui;
    std::unique_ptr<TestFrame> frame;
};

TEST_P(FrameWindowTest, AKnobIsTurnedAndTakenBackByTheKeyboard) {
    server.movePointer(39, 119);
    server.press();
    for (int y = 110; y >= 40; y -= 10) {
        server.movePointer(39, y);
        gui::settle(*ui);
    }
    server.release();
    gui::settle(*ui);
    EXPECT_GT(gain(), 1.0f);
    EXPECT_TRUE(frame->valueDisplay().isShowing());
    held([&] { frame->bindings().control(0)->takeFocus(); });
    gui::settle(*ui);
    server.holdKey(XK_Control_L, true);
    server.typeKey(XK_z);
    server.holdKey(XK_Control_L, false);
    EXPECT_TRUE(gui::runUntil(*ui, [&] { return gain() == 0.0f; }));
    EXPECT_TRUE(gui::runUntil(*ui, [&] { return frame->bindings().control(0)->value == 0; }));
}

TEST_P(FrameWindowTest, OpensAndClosesWhileAudioRunsAndMenusAreOpen) {
    std::atomic<bool> stop{false};
    std::thread audio([&] {
        for (int i = 0; !stop; ++i) {
            session.host.automate(0, i % 30);
            session.process();
        }
    });
    for (int round = 0; round < 10; ++round) {
        if (!ui) open();
        held([&] { frame->commands().toggleMidiLearn(); });
        gui::runUntil(*ui, [&, frames = 0]() mutable { return ++frames > 20; });
        held([&] {
            new Later(*ui, [&] { shut(); });
            if (round % 2) frame->presetsMenu().show({10.0f, 10.0f});
        });
        if (ui) gui::runUntil(*ui, [&] { return !ui; });
        ASSERT_FALSE(ui);
        EXPECT_EQ(session.host.model().owner().listener(), nullptr);
    }
    stop = true;
    audio.join();
}

INSTANTIATE_TEST_SUITE_P(Renderers, FrameWindowTest, ::testing::Bool(),
                         [](const auto& each) { return each.param ? "OpenGl" : "Memory"; });

}  // namespace
}  // namespace vanta::interface
