#pragma once

#include <cstdint>
#include <vector>

#include "gui/graphics/canvas.hpp"
#include "gui/graphics/curve_colors.hpp"
#include "gui/graphics/curve_outline.hpp"

namespace vanta::gui {

/// Curves and what fills the area around them as points to be joined by triangles: a row of points for each
/// edge at which the colour changes, six for one curve and ten for two, from the area's top to its bottom.
/// Memory is kept from one curve to the next.
class CurveMesh {
public:
    struct Position {
        float x;
        float y;
    };
    /// Premultiplied.
    struct Tint {
        std::uint8_t red, green, blue, opacity;
        bool operator==(const Tint&) const = default;
    };
    static Tint tintOf(Pixel pixel);

    /// All in device pixels.
    void build(const CurveSet& set, const DeviceRect& clip, const DeviceRect& area, DevicePoint origin,
               Canvas::CurveOrientation orientation, int alpha, float scale);

    int columnCount() const { return columnCount_; }
    /// Points of a column, which lie side by side in memory.
    int rowCount() const { return rowCount_; }
    const Position* positions(int row) const { return positions_.data() + row; }
    const Tint* tints(int row) const { return tints_.data() + row; }
    /// What lies between a row and the next has the colour of the row's first point all over.
    bool isPlain(int row) const { return plain_[static_cast<std::size_t>(row)]; }

private:
    void addColumn(const CurveColumn& column, const CurveColors& colors);

    bool isVertical_ = false;
    float originX_ = 0.0f;
    float areaTop_ = 0.0f;
    float areaBottom_ = 0.0f;
    int rowCount_ = 0;
    int columnCount_ = 0;
    std::array<Tint, 10> rowTints_{};  ///< where they are the same for all columns
    std::array<bool, 10> plain_{};
    std::vector<Position> positions_;
    std::vector<Tint> tints_;
};

}  // namespace vanta::gui
