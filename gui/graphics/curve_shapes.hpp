#pragma once

#include <array>
#include <span>

#include "gui/graphics/curve.hpp"
#include "gui/graphics/geometry.hpp"

namespace vanta::gui {

/// A table of values, one for each logical unit, joined by straight lines.
class Graph final : public Curve {
public:
    Graph() = default;
    /// Reads entry x + `offset` at x. The table is not copied and must outlive the drawing.
    explicit Graph(std::span<const float> table, int offset = 0) : table_(table), offset_(offset) {}

    void setTable(std::span<const float> table) { table_ = table; }
    /// The first and the last value hold beyond the ends; 0 for an empty table.
    float valueAt(float x) const override;

private:
    std::span<const float> table_;
    int offset_ = 0;
};

/// A polynomial of third degree.
class Cubic final : public Curve {
public:
    Cubic() = default;
    /// Through two points with the given slopes there. Spans below 1 count as 1.
    Cubic(Point from, float fromSlope, Point to, float toSlope);
    /// From the second of four points to the third, without a turn that the points do not have: the slope at
    /// a point is limited by those of both sides, and is flat where they differ in sign.
    explicit Cubic(const std::array<Point, 4>& points);

    float valueAt(float x) const override;

private:
    void solve(Point from, double fromSlope, Point to, double toSlope);

    std::array<double, 4> coefficients_{};  ///< of x to the power of the index
};

}  // namespace vanta::gui
