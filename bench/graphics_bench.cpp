#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "app/gallery/gallery_page.hpp"
#include "gui/graphics/bitmap.hpp"
#include "gui/graphics/curve_outline.hpp"
#include "gui/graphics/curve_shapes.hpp"
#include "gui/offscreen/offscreen_interface.hpp"
#include "gui/opengl/accelerated_renderer.hpp"
#include "gui/text/x11_text.hpp"
#include "tests/gui/null_gl.hpp"

namespace vanta::bench {
namespace {

using namespace gui;

/// The whole interface at double density.
struct Window {
    Window() {
        backing.setScale(2.0f);
        bitmap.setLogicalSize(1330, 798);
        image.setLogicalSize(1330, 798);
        image.fill({40, 60, 80, 200});
    }
    DeviceBacking backing;
    Bitmap bitmap{backing};
    Bitmap image{backing};
};

void fillWindow(benchmark::State& state, int alpha) {
    Window window;
    Canvas& canvas = window.bitmap.canvas();
    for (auto _ : state) {
        canvas.fillRect(window.bitmap.logicalRect(), {30, 32, 36, static_cast<std::uint8_t>(alpha)});
        benchmark::ClobberMemory();
    }
}
BENCHMARK_CAPTURE(fillWindow, opaque, 255)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(fillWindow, blended, 128)->Unit(benchmark::kMillisecond);

void drawWindow(benchmark::State& state, bool isOpaque, int alpha) {
    Window window;
    window.image.hasAlpha = !isOpaque;
    Canvas& canvas = window.bitmap.canvas();
    for (auto _ : state) {
        canvas.drawBitmap(window.image, {0, 0}, alpha);
        benchmark::ClobberMemory();
    }
}
BENCHMARK_CAPTURE(drawWindow, copied, true, 255)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(drawWindow, blended, false, 255)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(drawWindow, faded, false, 128)->Unit(benchmark::kMillisecond);

/// Values as a level display has them: they move a little all the time, and jump now and then.
std::vector<float> levels(std::size_t count) {
    std::vector<float> values(count);
    for (std::size_t i = 0; i < count; ++i) {
        const auto x = static_cast<float>(i);
        values[i] = 60 + 20 * std::sin(x * 0.02f) + 3 * std::sin(x * 0.7f) + (i % 97 == 0 ? 25.0f : 0.0f);
    }
    return values;
}

CurveSet curveOf(const Curve& curve, bool isFilled) {
    CurveSet set;
    set.entries[0].curve = &curve;
    set.entries[0].line = {120, 200, 255, 255};
    set.entries[0].lineWidth = 1.5f;
    if (isFilled) {
        set.entries[0].below = {60, 120, 255, 120};
        set.bottom = {60, 120, 255, 20};
    }
    return set;
}

/// What a renderer that joins columns needs.
void outlineOfTenThousandValues(benchmark::State& state) {
    const std::vector<float> values = levels(10000);
    const Graph graph(values);
    const CurveSet set = curveOf(graph, false);
    std::size_t needed = 0;
    for (auto _ : state) {
        CurveOutline outline(set, 0, 0.0f, 128.0f, 1.0f);
        needed = 0;
        forEachNeededColumn(outline, 10000, [&](const CurveColumn&) { ++needed; });
        benchmark::DoNotOptimize(needed);
    }
    state.counters["columns"] = static_cast<double>(needed);
}
BENCHMARK(outlineOfTenThousandValues)->Unit(benchmark::kMillisecond);

void drawCurve(benchmark::State& state, std::size_t count, float scale, bool isFilled) {
    const std::vector<float> values = levels(count);
    const Graph graph(values);
    const CurveSet set = curveOf(graph, isFilled);
    DeviceBacking backing;
    backing.setScale(scale);
    Bitmap bitmap(backing);
    bitmap.setLogicalSize(static_cast<float>(count), 128);
    Canvas& canvas = bitmap.canvas();
    for (auto _ : state) {
        canvas.drawCurves(set, bitmap.logicalRect(), {0, 0}, Canvas::CurveOrientation::OverX);
        benchmark::ClobberMemory();
    }
}
BENCHMARK_CAPTURE(drawCurve, ten_thousand_values, 10000, 1.0f, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(drawCurve, window_wide, 1330, 2.0f, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(drawCurve, window_wide_above_a_ramp, 1330, 2.0f, true)->Unit(benchmark::kMillisecond);

/// All of the interface's kinds of control in a window of its size, and three curves as wide as the window.
class FullWindow final : public OffscreenInterface {
public:
    FullWindow() : OffscreenInterface(1330, 798) {
        deviceBacking().setScale(2.0f);
        gallery::buildGallery(*this, false);
        drainRelay();
    }
    ~FullWindow() override { shutDown(); }

    std::unique_ptr<Bitmap> createBitmap() override {
        return std::make_unique<AcceleratedBitmap>(deviceBacking());
    }
    std::unique_ptr<Text> createText() override {
        return std::make_unique<X11Text>(deviceBacking(), createBitmap());
    }

    void draw(Canvas& canvas) {
        const Canvas::State state{{0, 0, 1330, 798}, 255, {}};
        canvas.setState(state);
        rootControl().drawTree(canvas);
        canvas.setState(state);
        for (const float top : {490.0f, 590.0f, 690.0f}) {
            canvas.drawCurves(set_, Rect::ofSize(0, top, 1330, 100), {0, top},
                              Canvas::CurveOrientation::OverX);
        }
    }

private:
    std::vector<float> values_ = levels(1330);
    Graph graph_{values_};
    CurveSet set_ = curveOf(graph_, true);
};

void repaintInMemory(benchmark::State& state) {
    FullWindow window;
    Bitmap page(window.deviceBacking());
    page.setLogicalSize(1330, 798);
    for (auto _ : state) {
        window.draw(page.canvas());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(repaintInMemory)->Unit(benchmark::kMillisecond);

/// Our own share of a frame: everything but what OpenGL does when it is called.
void repaintByOpenGl(benchmark::State& state) {
    FullWindow window;
    static int draws;
    GlFunctions gl = nullGl();
    gl.DrawArrays = [](GLenum, GLint, GLsizei) { ++draws; };
    gl.DrawElements = [](GLenum, GLsizei, GLenum, const void*) { ++draws; };
    AcceleratedRenderer renderer(gl, window.deviceBacking());
    Canvas canvas(renderer);
    for (auto _ : state) {
        draws = 0;
        renderer.beginFrame({2660, 1596});
        window.draw(canvas);
    }
    state.counters["draws"] = draws;
}
BENCHMARK(repaintByOpenGl)->Unit(benchmark::kMillisecond);

void text(benchmark::State& state, bool isRendered) {
    DeviceBacking backing;
    backing.setScale(2.0f);
    X11Text text(backing);
    int value = 0;
    for (auto _ : state) {
        text.text = std::to_string(++value % 1000) + " dB";
        if (isRendered) {
            benchmark::DoNotOptimize(text.bitmap().row(0));
        } else {
            benchmark::DoNotOptimize(text.width());
        }
    }
}
BENCHMARK_CAPTURE(text, measured, false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(text, rendered, true)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace vanta::bench
