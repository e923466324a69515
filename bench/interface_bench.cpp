#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <ctime>
#include <vector>

#include "gui/offscreen/offscreen_interface.hpp"
#include "gui/opengl/accelerated_renderer.hpp"
#include "gui/text/x11_text.hpp"
#include "host/common/hosted_plugin.hpp"
#include "interface/layout/vanta_interface.hpp"
#include "limiter/model/vanta_plugin.hpp"
#include "tests/gui/null_gl.hpp"
#include "tests/plugin/user_home.hpp"
#include "tests/support/signals.hpp"

namespace vanta::bench {
namespace {

using DisplayMode = VantaParameters::DisplayMode;

constexpr int kBlock = 256;
constexpr int kRate = 48000;
constexpr int kFrames = 300;
constexpr int kFramesBefore = 300;
constexpr float kWidth = 1330.0f;
constexpr float kHeight = 798.0f;

struct NoHost final : HostCallbacks {
    void parameterEdited(int, Edit, float) override {}
    void latencyChanged() override {}
    void pumpRequested() override {}
};

/// A window in memory with all that a window of X has, at a time of its own.
class Window final : public gui::OffscreenInterface {
public:
    explicit Window(bool isAccelerated) : OffscreenInterface(kWidth, kHeight, &readClock) {
        deviceBacking().setScale(2.0f);
        accelerated = isAccelerated;
    }
    ~Window() override { shutDown(); }

    std::unique_ptr<gui::Bitmap> createBitmap() override {
        return std::make_unique<gui::AcceleratedBitmap>(deviceBacking());
    }
    std::unique_ptr<gui::Text> createText() override {
        return std::make_unique<gui::X11Text>(deviceBacking(), createBitmap());
    }
    void tick() {
        if (accelerated) {
            tickFrameTimers();
            drainRelay();
        } else {
            frame();
        }
    }

    static std::int64_t readClock() { return now; }
    static inline std::int64_t now = 0;
};

/// Noise in a rhythm, so that every bar, number and curve moves with each frame.
class Music {
public:
    Music() {
        for (unsigned c = 0; c < channels_.size(); ++c) {
            channels_[c] = test::pinkNoise(1000u + c, 4 * kRate, 0.25);
            for (std::size_t i = 0; i < channels_[c].size(); ++i) {
                const double t = static_cast<double>(i) / kRate;
                channels_[c][i] *= static_cast<float>(0.1 + std::exp(-6.0 * std::fmod(t, 0.5)));
            }
        }
    }
    std::array<const float*, 2> next() {
        position_ = (position_ + kBlock) % (channels_[0].size() - kBlock);
        return {channels_[0].data() + position_, channels_[1].data() + position_};
    }

private:
    std::array<std::vector<float>, 2> channels_;
    std::size_t position_ = 0;
};

/// The limiter at work and its whole interface, all of which is shown.
class Scene {
public:
    Scene(DisplayMode mode, bool isAccelerated) : window_(isAccelerated) {
        plugin_.activate(kRate, kBlock);
        auto& model = static_cast<VantaPlugin&>(plugin_.model());
        model.settings().loaded = false;
        model.statics().settings.showWelcomeHint = false;
        interface_.emplace(window_, model);
        model.gain.setValue(9.0f, 1);
        model.showAdvanced.setValue(1.0f, 1);
        model.displayMode.setValue(static_cast<float>(mode), 1);
    }

    /// What comes between two frames and is no part of one.
    void play() {
        Window::now += 1000 / (window_.accelerated ? kFastest : interface::VantaInterface::kFramesPerSecond);
        for (; played_ * 1000 < Window::now * kRate; played_ += kBlock) {
            const std::array<const float*, 2> inputs = music_.next();
            std::array<float*, 2> outputs{output_[0].data(), output_[1].data()};
            NoHostEvents events;
            plugin_.process({.inputs = inputs, .sideChain = {}, .outputs = outputs, .samples = kBlock},
                            events);
        }
        plugin_.pump();
    }
    /// Lets readings, fades and the display come to what they are while music plays.
    void warmUp() {
        for (int i = 0; i < kFramesBefore; ++i) {
            play();
            window_.tick();
        }
    }
    Window& window() { return window_; }

private:
    /// Frames a second of a render thread.
    static constexpr int kFastest = 60;

    test::UserHome home_;
    NoHost host_;
    HostedPlugin plugin_{host_, kStereoLayout};
    Window window_;
    Music music_;
    std::optional<interface::VantaInterface> interface_;
    std::array<std::array<float, kBlock>, 2> output_{};
    std::int64_t played_ = Window::now * kRate / 1000;
};

/// Milliseconds of this thread's own, which the other work of a busy machine does not add to.
double threadMs() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

/// Times each frame; the counters tell of the dearest ones, of what is computed before anything is painted,
/// and of how much of the window is painted.
template <typename Paint>
void timeFrames(benchmark::State& state, Scene& scene, const Paint& paint) {
    std::vector<double> frames;
    double painted = 0.0;
    double ticking = 0.0;
    for (auto _ : state) {
        scene.play();
        const double start = threadMs();
        scene.window().tick();
        ticking += threadMs() - start;
        painted += paint();
        frames.push_back(threadMs() - start);
        state.SetIterationTime(frames.back() / 1e3);
    }
    std::ranges::sort(frames);
    const auto count = static_cast<double>(frames.size());
    state.counters["least_ms"] = frames.front();
    state.counters["median_ms"] = frames[frames.size() / 2];
    state.counters["p99_ms"] = frames[frames.size() * 99 / 100];
    state.counters["tick_ms"] = ticking / count;
    state.counters["painted_%"] = 100.0 * painted / count / (kWidth * kHeight);
}

/// As a window does that is painted in memory, up to where the picture is handed to the X server.
void frameInMemory(benchmark::State& state) {
    Scene scene(static_cast<DisplayMode>(state.range(0)), false);
    gui::RootControl& root = scene.window().rootControl();
    gui::Bitmap page(scene.window().deviceBacking());
    page.setLogicalSize(kWidth, kHeight);
    const auto paint = [&] {
        const gui::Rect dirty = root.takeDirtyRect().intersected(root.localBounds());
        if (dirty.isEmpty()) return 0.0f;
        page.canvas().setState({dirty, 255, {}});
        root.drawTree(page.canvas());
        benchmark::ClobberMemory();
        return dirty.width() * dirty.height();
    };
    scene.warmUp();
    timeFrames(state, scene, paint);
}

/// Our own share of a frame by OpenGL, whose functions do nothing.
void frameByOpenGl(benchmark::State& state) {
    Scene scene(static_cast<DisplayMode>(state.range(0)), true);
    gui::RootControl& root = scene.window().rootControl();
    static int draws;
    gui::GlFunctions gl = gui::nullGl();
    gl.DrawArrays = [](GLenum, GLint, GLsizei) { ++draws; };
    gl.DrawElements = [](GLenum, GLsizei, GLenum, const void*) { ++draws; };
    gui::AcceleratedRenderer renderer(gl, scene.window().deviceBacking());
    gui::Canvas canvas(renderer);
    const auto paint = [&] {
        root.takeDirtyRect();
        draws = 0;
        renderer.beginFrame({static_cast<int>(2 * kWidth), static_cast<int>(2 * kHeight)});
        canvas.setState({root.localBounds(), 255, {}});
        root.drawTree(canvas);
        return kWidth * kHeight;
    };
    scene.warmUp();
    timeFrames(state, scene, paint);
    state.counters["draws"] = draws;
}

void everyMode(benchmark::internal::Benchmark* bench) {
    bench->DenseRange(0, static_cast<int>(DisplayMode::Infinite))->ArgName("mode");
    bench->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(kFrames);
}
BENCHMARK(frameInMemory)->Apply(everyMode);
BENCHMARK(frameByOpenGl)->Apply(everyMode);

}  // namespace
}  // namespace vanta::bench
