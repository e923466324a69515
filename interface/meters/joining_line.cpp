#include "interface/meters/joining_line.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "gui/graphics/curve_shapes.hpp"

namespace vanta::interface {
namespace {

/// Of the width, on each side of a corner.
constexpr float kCorner = 0.075f;

}  // namespace

std::vector<float> joiningTable(const JoiningWay& way, float width) {
    const float t = std::clamp(way.place, 0.0f, 1.0f);
    const float bend = (0.35f * t + 0.15f) * width;
    const float end = (0.15f * t + 0.75f) * width;
    const float slope = (way.to - way.from) / std::max(end - bend, 1.0f);
    const auto straight = [&](float x) { return way.from + slope * (std::clamp(x, bend, end) - bend); };
    const float corner = kCorner * width;
    const gui::Cubic first({bend - corner, way.from}, 0.0f, {bend + corner, straight(bend + corner)}, slope);
    const gui::Cubic second({end - corner, straight(end - corner)}, slope, {end + corner, way.to}, 0.0f);

    std::vector<float> table(static_cast<std::size_t>(std::ceil(std::max(width, 0.0f))) + 1);
    for (std::size_t i = 0; i < table.size(); ++i) {
        const auto x = static_cast<float>(i);
        table[i] = straight(x);
        if (way.isSoft && std::abs(x - bend) < corner) table[i] = first.valueAt(x);
        if (way.isSoft && std::abs(x - end) < corner) table[i] = second.valueAt(x);
    }
    return table;
}

}  // namespace vanta::interface
