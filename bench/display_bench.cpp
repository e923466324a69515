#include <benchmark/benchmark.h>

#include <cmath>
#include <sstream>

#include "foundation/binary_data.hpp"
#include "foundation/resource.hpp"
#include "gui/animation/animator.hpp"
#include "gui/artwork/artwork_resources.hpp"
#include "gui/offscreen/offscreen_interface.hpp"
#include "interface/display/limiter_display.hpp"

namespace vanta::bench {
namespace {

using interface::DisplayMode;
using interface::LimiterDisplay;

constexpr int kBlock = 256;
constexpr int kRate = 48000;
constexpr int kFrameMs = 17;

/// The largest interface of the program, at double density, at a time of its own.
struct Scene {
    explicit Scene(DisplayMode mode) : ui(1330.0f, 798.0f, &readClock), animator(ui.make<gui::Animator>()) {
        addResources(gui::artworkResources());
        now = 0;
        ui.deviceBacking().setScale(2.0f);
        ui.loadBackdrop("Background");
        animator.running = true;
        display = &ui.make<LimiterDisplay>(&animator, levels);
        display->sampleRate = static_cast<float>(kRate);
        display->setBounds(ui.rootControl().localBounds());
        display->parent = &ui.rootControl();
        const auto mapping = interface::curveOf(interface::MeterScale::Db48);
        display->curve = mapping;
        display->scale = (798.0f - LimiterDisplay::kOffScale) / -mapping.toDisplay(-48.0f);
        display->grid().extras = std::vector<float>{-48.0f};
        display->grid().steps = &interface::stepsOf(interface::MeterScale::Db48);
        display->setMode(mode, 1330.0f);
        page->setLogicalSize(1330.0f, 798.0f);
        for (int i = 0; i < 1200; ++i) frame();
    }

    void frame() {
        now += kFrameMs;
        const std::int64_t blocks = now * kRate / 1000 / kBlock - delivered / kBlock;
        if (blocks > 0) deliver(static_cast<int>(blocks));
        ui.frame();
    }
    void paint() { ui.rootControl().drawTree(page->canvas()); }

    void deliver(int blocks) {
        std::stringstream bytes;
        BinaryDataWriter writer(bytes);
        for (int source = 0; source < 3; ++source) {
            for (const int value : {2, blocks, kBlock}) writer.writeInt(value);
            for (int i = 0; i < 2 * blocks * kBlock; ++i) {
                const double t = static_cast<double>(delivered + i / 2) / kRate;
                const double beat = std::exp(-6.0 * std::fmod(t, 0.5));
                writer.writeFloat(
                    static_cast<float>(source == 2 ? 1.0 - 0.5 * beat : (beat + 0.1) * std::sin(2765.0 * t)));
            }
        }
        for (int i = 0; i < levels.levelCount() * 6; ++i) writer.writeInt(0);
        BinaryDataReader reader(bytes);
        levels.read(reader);
        delivered += static_cast<std::int64_t>(blocks) * kBlock;
    }

    static std::int64_t readClock() { return now; }
    static inline std::int64_t now = 0;

    LevelExchange levels{{2, 3, 3, 3, 0}};
    gui::OffscreenInterface ui;
    gui::Animator& animator;
    LimiterDisplay* display;
    std::unique_ptr<gui::Bitmap> page = ui.createBitmap();
    std::int64_t delivered = 0;
};

/// What a frame computes and paints into strips, without what a processor hands over.
void displayFrame(benchmark::State& state, DisplayMode mode) {
    Scene scene(mode);
    for (auto _ : state) {
        state.PauseTiming();
        Scene::now += kFrameMs;
        scene.deliver(3);
        state.ResumeTiming();
        scene.ui.frame();
    }
}
BENCHMARK_CAPTURE(displayFrame, scrolling, DisplayMode::Fast)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(displayFrame, infinite, DisplayMode::Infinite)->Unit(benchmark::kMillisecond);

/// Ground, display, grid and labels.
void displayPicture(benchmark::State& state, DisplayMode mode) {
    Scene scene(mode);
    for (auto _ : state) {
        scene.paint();
        benchmark::ClobberMemory();
    }
}
BENCHMARK_CAPTURE(displayPicture, scrolling, DisplayMode::Fast)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(displayPicture, slow_down, DisplayMode::SlowDown)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(displayPicture, infinite, DisplayMode::Infinite)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vanta::bench
