#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <thread>
#include <vector>

#include "foundation/realtime.hpp"
#include "gui/offscreen/offscreen_interface.hpp"
#include "host/common/hosted_plugin.hpp"
#include "interface/page/limiter_page.hpp"
#include "limiter/model/vanta_plugin.hpp"
#include "tests/support/realtime_trap.hpp"

namespace vanta::interface {
namespace {

using test::RealtimeTrap;

class SilentHost final : public HostCallbacks {
public:
    void parameterEdited(int, Edit, float) override {}
    void latencyChanged() override {}
    void pumpRequested() override {}
};

/// A limiter that plays a loud tone, block by block.
class Player {
public:
    Player() : plugin_(host_, kStereoLayout) { plugin_.activate(48000.0, kBlock); }

    void playBlock() {
        std::array<float*, 2> outputs{};
        std::array<const float*, 2> inputs{};
        for (std::size_t c = 0; c < 2; ++c) {
            for (float& sample : samples_[c]) sample = 1.5f * std::sin(0.06f * static_cast<float>(time_++));
            inputs[c] = outputs[c] = samples_[c].data();
        }
        NoHostEvents events;
        const RealtimeScope realtime;
        plugin_.process({.inputs = inputs, .sideChain = {}, .outputs = outputs, .samples = kBlock}, events);
    }
    HostedPlugin& plugin() { return plugin_; }
    VantaPlugin& model() { return static_cast<VantaPlugin&>(plugin_.model()); }

private:
    static constexpr int kBlock = 256;

    SilentHost host_;
    HostedPlugin plugin_;
    std::array<std::array<float, kBlock>, 2> samples_{};
    int time_ = 0;
};

/// A limiter at work under the whole page: what an interface draws costs the audio thread nothing.
TEST(LimiterPage, NeverKeepsTheAudioThreadWaiting) {
    Player player;
    ExchangeLink link(player.model(), player.model().levels(), kStereoLayout);
    gui::OffscreenInterface ui(800.0f, 480.0f);
    auto& page = ui.make<LimiterPage>(link, 48000.0f);
    player.playBlock();
    player.model().adapter()->syncLevels();

    RealtimeTrap trap;
    std::atomic<bool> playing{true};
    std::thread audio([&] {
        const RealtimeTrap::ThreadWatch watch;
        for (int block = 0; block < 400; ++block) {
            player.playBlock();
            std::this_thread::sleep_for(std::chrono::milliseconds(3));
        }
        playing = false;
    });
    int frames = 0;
    while (playing.load()) {
        player.model().adapter()->syncLevels();
        ui.frame();
        if (++frames % 4 == 0) ui.picture();
    }
    audio.join();
    EXPECT_EQ(trap.total(), 0) << trap.report();
    EXPECT_TRUE(page.display().curveAt(LimiterDisplay::Reduction).isPrimed());
    EXPECT_LT(page.display().curveAt(LimiterDisplay::Reduction).flatColumns(), 1000) << "the limiter works";
}

}  // namespace
}  // namespace vanta::interface
