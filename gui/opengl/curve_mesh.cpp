#include "gui/opengl/curve_mesh.hpp"

#include <algorithm>
#include <cmath>

namespace vanta::gui {
namespace {

constexpr int kRowsOfACurve = 4;
/// Where a ramp of colours reaches from the area's edge to a curve, two triangles between far columns of
/// different height would bend it. Within this many pixels that cannot be seen.
constexpr float kLargestStep = 2.0f;

DeviceRect upright(const DeviceRect& rect, bool isVertical) {
    return isVertical ? DeviceRect{rect.top, rect.left, rect.bottom, rect.right} : rect;
}

}  // namespace

CurveMesh::Tint CurveMesh::tintOf(Pixel pixel) {
    return {static_cast<std::uint8_t>(pixel >> 16), static_cast<std::uint8_t>(pixel >> 8),
            static_cast<std::uint8_t>(pixel), static_cast<std::uint8_t>(opacityOf(pixel))};
}

void CurveMesh::build(const CurveSet& set, const DeviceRect& clip, const DeviceRect& area, DevicePoint origin,
                      Canvas::CurveOrientation orientation, int alpha, float scale) {
    isVertical_ = orientation == Canvas::CurveOrientation::OverY;
    const DeviceRect bounds = upright(clip, isVertical_);
    const DeviceRect whole = upright(area, isVertical_);
    const DevicePoint zero = isVertical_ ? DevicePoint{origin.y, origin.x} : origin;
    originX_ = static_cast<float>(zero.x) + CurveOutline::kColumnCenter;
    areaTop_ = static_cast<float>(whole.top);
    areaBottom_ = static_cast<float>(whole.bottom);

    const CurveColors colors(set, alpha, whole.top, whole.bottom);
    // From the column before the first: positions are rounded on their way to pixels, and the first pixel's
    // middle must not fall off the edge.
    CurveOutline outline(set, bounds.left - 1 - zero.x, static_cast<float>(zero.y), areaBottom_, scale);
    rowCount_ = kRowsOfACurve * outline.count() + 2;
    const auto last = static_cast<std::size_t>(outline.count()) - 1;
    rowTints_[0] = tintOf(colors.top);
    bool hasRamp = colors.top != colors.entries[0].above || colors.bottom != colors.entries[last].below;
    for (std::size_t e = 0, row = 1; e <= last; ++e, row += kRowsOfACurve) {
        const CurveColors::Entry& entry = colors.entries[e];
        rowTints_[row] = tintOf(entry.above);
        rowTints_[row + 1] = rowTints_[row + 2] = tintOf(entry.line);
        rowTints_[row + 3] = tintOf(entry.below);
        hasRamp = hasRamp || colors.hasGradient(e);
    }
    if (last == 1) hasRamp = hasRamp || colors.entries[0].below != colors.entries[1].above;
    rowTints_[static_cast<std::size_t>(rowCount_) - 1] = tintOf(colors.bottom);
    for (std::size_t row = 0; row + 1 < static_cast<std::size_t>(rowCount_); ++row) {
        const std::size_t curve = row / kRowsOfACurve;
        const bool touchesLine = row > 0 && row % kRowsOfACurve != 0;
        plain_[row] = rowTints_[row] == rowTints_[row + 1] && !(touchesLine && colors.hasGradient(curve));
    }

    positions_.clear();
    tints_.clear();
    columnCount_ = 0;
    CurveColumn emitted{};
    const auto isWanted = [&](const CurveColumn& column) {
        // Where one curve gives way to the other, bands do not run on straight.
        if (last == 1 && column.bands[1].glowTop - column.bands[0].glowBottom < kLargestStep) return true;
        if (!hasRamp) return false;
        for (std::size_t e = 0; e <= last; ++e) {
            if (!(std::abs(column.steps[e].middle - emitted.steps[e].middle) <= kLargestStep)) return true;
        }
        return false;
    };
    const auto emit = [&](const CurveColumn& column) {
        emitted = column;
        addColumn(column, colors);
    };
    forEachNeededColumn(outline, bounds.width() + 1, emit, isWanted);
}

void CurveMesh::addColumn(const CurveColumn& column, const CurveColors& colors) {
    const float x = originX_ + static_cast<float>(column.column);
    const auto add = [&](float y) { positions_.push_back(isVertical_ ? Position{y, x} : Position{x, y}); };
    const std::size_t first = tints_.size();
    tints_.insert(tints_.end(), rowTints_.begin(), rowTints_.begin() + rowCount_);
    add(areaTop_);
    for (int i = 0; i < (rowCount_ - 2) / kRowsOfACurve; ++i) {
        const auto e = static_cast<std::size_t>(i);
        const CurveBand& band = column.bands[e];
        add(band.glowTop);
        add(band.coreTop);
        add(band.coreBottom);
        add(band.glowBottom);
        if (!colors.hasGradient(e)) continue;
        const std::size_t core = first + 2 + e * kRowsOfACurve;
        tints_[core] = tints_[core + 1] = tintOf(colors.lineAt(e, column.steps[e].middle));
    }
    add(areaBottom_);
    ++columnCount_;
}

}  // namespace vanta::gui
