#include "gui/graphics/curve_shapes.hpp"

#include <algorithm>
#include <cmath>

namespace vanta::gui {
namespace {

/// The rise that an end of a segment adds to it as a Bezier curve: a third of the tangent there, which is
/// the harmonic mean of the segment's rise and the neighbour's continued over its width.
double limitedRise(double width, double rise, Point neighbourFrom, Point neighbourTo) {
    const double neighbourWidth = std::max(1.0, static_cast<double>(neighbourTo.x) - neighbourFrom.x);
    const double continued = width / neighbourWidth * (static_cast<double>(neighbourTo.y) - neighbourFrom.y);
    if (!(continued * rise > 0.0)) return 0.0;
    return 2.0 / 3.0 * continued * rise / (continued + rise);
}

}  // namespace

float Graph::valueAt(float x) const {
    if (table_.empty()) return 0.0f;
    const int last = static_cast<int>(table_.size()) - 1;
    // Beyond this no table reaches, and a float no longer holds every whole number.
    const float limited = std::clamp(x, -16777216.0f, 16777216.0f);
    const float whole = std::floor(limited);
    const int i = std::clamp(static_cast<int>(whole) + offset_, 0, last);
    const float from = table_[static_cast<std::size_t>(i)];
    const float to = table_[static_cast<std::size_t>(std::min(i + 1, last))];
    return from + (to - from) * (limited - whole);
}

Cubic::Cubic(Point from, float fromSlope, Point to, float toSlope) {
    solve(from, fromSlope, to, toSlope);
}

Cubic::Cubic(const std::array<Point, 4>& points) {
    const auto [p0, p1, p2, p3] = points;
    const double width = std::max(1.0, static_cast<double>(p2.x) - p1.x);
    const double rise = static_cast<double>(p2.y) - p1.y;
    // A Bezier curve leaves its end with three times the rise to the next control point.
    solve(p1, 3.0 * limitedRise(width, rise, p0, p1) / width, p2,
          3.0 * limitedRise(width, rise, p2, p3) / width);
}

void Cubic::solve(Point from, double fromSlope, Point to, double toSlope) {
    // Hermite form over t = x - from.x, then expanded to powers of x.
    const double width = std::max(1.0, static_cast<double>(to.x) - from.x);
    const double slope = (static_cast<double>(to.y) - from.y) / width;
    const double square = (3.0 * slope - 2.0 * fromSlope - toSlope) / width;
    const double cube = (fromSlope + toSlope - 2.0 * slope) / (width * width);
    const double x0 = from.x;
    coefficients_ = {from.y - x0 * (fromSlope - x0 * (square - x0 * cube)),
                     fromSlope - x0 * (2.0 * square - 3.0 * x0 * cube), square - 3.0 * x0 * cube, cube};
}

float Cubic::valueAt(float x) const {
    const double at = x;
    return static_cast<float>(coefficients_[0] +
                              at * (coefficients_[1] + at * (coefficients_[2] + at * coefficients_[3])));
}

}  // namespace vanta::gui
