#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include <fmt/format.h>

#include "interface/meters/display_grid_control.hpp"
#include "interface/meters/display_grid_link.hpp"
#include "interface/meters/joining_line.hpp"
#include "interface/meters/level_text.hpp"
#include "interface/meters/meter_scale.hpp"
#include "tests/gui/test_interface.hpp"

namespace vanta::interface {
namespace {

using gui::Rect;

constexpr MeterScale kAllScales[] = {MeterScale::Db16, MeterScale::Db32, MeterScale::Db48,    MeterScale::K12,
                                     MeterScale::K14,  MeterScale::K20,  MeterScale::Loudness};
constexpr float kTarget = -14.0f;
TEST(DisplayGrid, Explore) {
    gui::TestInterface ui(800.0f, 2000.0f);
    for (float height : {480.0f, 570.0f, 798.0f, 160.0f, 1500.0f}) {
        for (const MeterScale scale : kAllScales) {
            LevelDisplay display(ui);
            display.setBounds(Rect::ofSize(0, 0, 100, height));
            DisplayGrid grid(display);
            display.offset = 57.0f;
            const float k = referenceOf(scale);
            float range = scale == MeterScale::Loudness ? 18.0f + 14.0f : rangeOf(scale);
            display.curve = curveOf(scale);
            display.scale = (height - 101.0f) / -display.curve.value().toDisplay(-range);
            grid.margins = Rect{0, 56, 0, 39};
            grid.minimumSpacing = 32.0f;
            grid.format = "%+.0f dB";
            grid.steps = &stepsOf(scale);
            grid.labelShift = k;
            grid.tickOrigin = scale == MeterScale::Loudness ? kTarget : 0.0f;
            grid.extras = k > 0 ? std::vector<float>{k, 0.0f, k - 46.0f} : std::vector<float>{-range};
            std::string line = fmt::format("{} {}:", height, static_cast<int>(scale));
            for (const Tick& tick : grid.ticks())
                line += fmt::format(" {}{}{}@{:.0f}", tick.extra ? "*" : "", tick.level,
                                    tick.labelled ? "L" : "", tick.position);
            puts(line.c_str());
        }
    }
}

}  // namespace
}  // namespace vanta::interface
