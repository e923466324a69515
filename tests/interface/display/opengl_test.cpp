#include "tests/gui/opengl_stage.hpp"

// After the stage, whose headers define what must be taken back before ours.
#include <gtest/gtest.h>

#include <fmt/format.h>

#include "tests/interface/display/display_rig.hpp"

namespace vanta::interface {
namespace {

DisplayRig::Sample beats(std::int64_t i) {
    const double t = static_cast<double>(i) / 48000.0;
    const double beat = std::exp(-6.0 * std::fmod(t, 0.5));
    const double x = (1.4 * beat + 0.1) * std::sin(t * 2764.6);
    const double gain = 1.0 - 0.5 * beat;
    return {static_cast<float>(x), static_cast<float>(x * gain), static_cast<float>(gain)};
}

/// Strips are painted in memory in both; in Infinite the renderer draws the curves.
TEST(LevelTimeDisplay, LooksTheSameByOpenGl) {
    for (const float scale : {1.0f, 1.5f, 2.0f}) {
        for (const auto mode : {DisplayMode::SlowDown, DisplayMode::Slow, DisplayMode::Infinite}) {
            SCOPED_TRACE(fmt::format("mode {}, scale {}", static_cast<int>(mode), scale));
            BasicDisplayRig<gui::TexturedInterface> rig(400.0f, 350.0f, scale);
            rig.ui.loadBackdrop("Background");
            rig.signal = beats;
            rig.loudness = -14.0f;
            rig.setMode(mode);
            rig.run(2500);
            const auto inMemory = rig.ui.picture();
            gui::Stage stage(rig.ui.deviceBacking());
            const gui::DeviceRect& size = inMemory->pixelRect();
            const gui::Pixel* first = inMemory->row(0);
            const gui::Difference found({first, first + size.right * size.bottom},
                                        stage.frame(size.right, size.bottom, [&](gui::Canvas& canvas) {
                                            rig.ui.rootControl().drawTree(canvas);
                                        }));
            // Of curves, columns that are left out lie a fraction of a pixel off.
            EXPECT_LE(found.worst, mode == DisplayMode::Infinite ? 64 : 3);
            EXPECT_LE(found.notable, mode == DisplayMode::Infinite ? size.right * size.bottom / 200 : 0);
        }
    }
}

}  // namespace
}  // namespace vanta::interface
