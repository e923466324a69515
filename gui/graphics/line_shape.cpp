#include "gui/graphics/line_shape.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vanta::gui {
namespace {

/// 0 outside the outer two, 1 between the inner two.
float trapezoid(float x, const std::array<float, 4>& edges) {
    if (!(x > edges[0] && x < edges[3])) return 0.0f;
    if (x < edges[1]) return (x - edges[0]) / (edges[1] - edges[0]);
    if (x > edges[2]) return (edges[3] - x) / (edges[3] - edges[2]);
    return 1.0f;
}

}  // namespace

float LineShape::coverage(float x, float y) const {
    const float slope = (middle[3] - middle[0]) / (along[3] - along[0]);
    return trapezoid(x, along) * trapezoid(y - middle[0] - slope * (x - along[0]), across);
}

std::optional<LineShape> lineShape(Point from, Point to, float width, float scale) {
    from = {from.x * scale, from.y * scale};
    to = {to.x * scale, to.y * scale};
    LineShape shape{};
    shape.isSteep = std::abs(to.x - from.x) < std::abs(to.y - from.y);
    if (shape.isSteep) {
        std::swap(from.x, from.y);
        std::swap(to.x, to.y);
    }
    const float length = std::abs(to.x - from.x);
    if (!(length >= 0.01f) || !(width > 0.0f)) return std::nullopt;

    // A line covers the pixel at which it starts and not the one at which it ends; backwards it covers both.
    const float slope = (to.y - from.y) / (to.x - from.x);
    const float start = to.x > from.x ? from.x : to.x;
    const float end = to.x > from.x ? to.x : from.x + 1.0f;
    shape.along = {start - 0.5f, start + 0.5f, end - 0.5f, end + 0.5f};
    if (shape.along[1] > shape.along[2]) shape.along[1] = shape.along[2] = (start + end) * 0.5f;
    // Its points are middles of pixels.
    for (std::size_t i = 0; i < 4; ++i) {
        shape.middle[i] = from.y + slope * (shape.along[i] - 0.5f - from.x);
    }

    const float s = std::abs(slope);
    const float h = std::sqrt(s * s + 1.0f) * width * 0.5f * scale + s * 0.5f;
    const float inner = std::max(h - s, 0.5f);
    shape.across = {-h, 1.0f - inner, inner, h + 1.0f};
    return shape;
}

}  // namespace vanta::gui
