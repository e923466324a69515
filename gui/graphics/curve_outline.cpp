#include "gui/graphics/curve_outline.hpp"

#include <algorithm>
#include <cmath>

namespace vanta::gui {
namespace {

/// How far a column may deviate from the last one drawn, over the columns between, in device pixels.
constexpr float kTolerance = 0.2f;

/// A line's extent along a column grows with its slope.
float steepness(float reach) {
    return std::sqrt(reach * reach + 1.0f);
}

CurveBand bandOf(const CurveStepper::Step& step, float line, float glow) {
    const float up = steepness(step.up), down = steepness(step.down);
    const float lineTop = step.middle - (line * up + step.up) * 0.5f;
    const float lineBottom = step.middle + (line * down + step.down) * 0.5f;
    return {lineTop - glow * 0.5f * up, std::min(lineTop + step.up + 1.0f, step.middle + 0.5f),
            std::max(lineBottom - step.down, step.middle + 0.5f), lineBottom + glow * 0.5f * down + 1.0f};
}

/// Makes room for what lies below.
void giveWay(CurveBand& band, float limit) {
    if (band.glowBottom > limit) {
        band.glowBottom = limit;
        band.coreBottom = std::min(band.coreBottom, limit);
        // Where there is room the line fades towards what lies below, instead of ending at a hard edge.
        if (limit - band.coreTop > 1.0f) {
            band.coreTop = band.coreBottom = (band.coreTop + band.coreBottom) * 0.5f;
        }
    }
    band.coreTop = std::min(band.coreTop, limit);
    band.glowTop = std::min(band.glowTop, limit);
}

}  // namespace

CurveOutline::CurveOutline(const CurveSet& set, int first, float yOffset, float areaBottom, float scale)
    : count_(std::clamp(set.count, 1, 2)), areaBottom_(areaBottom) {
    for (int i = 0; i < count_; ++i) {
        const auto e = static_cast<std::size_t>(i);
        const CurveEntry& entry = set.entries[e];
        steppers_[e].begin(*entry.curve, entry.lineWidth, entry.glowWidth, first, yOffset, scale);
    }
    column_ = first;
}

void CurveOutline::next(CurveColumn& column) {
    column.column = column_++;
    float limit = areaBottom_;
    for (int i = count_ - 1; i >= 0; --i) {
        const auto e = static_cast<std::size_t>(i);
        CurveStepper& stepper = steppers_[e];
        CurveBand& band = column.bands[e];
        column.steps[e] = stepper.next();
        band = bandOf(column.steps[e], stepper.lineExtent(), stepper.glowExtent());
        if (i == count_ - 1) {
            // The lowest curve may leave the area.
            limit = std::max(limit, band.glowBottom);
        } else {
            giveWay(band, limit);
        }
        limit = std::min(limit, band.glowTop);
    }
}

bool ColumnFilter::differs(const CurveColumn& column, float tolerance) const {
    for (int i = 0; i < curveCount_; ++i) {
        const CurveStepper::Step& a = column.steps[static_cast<std::size_t>(i)];
        const CurveStepper::Step& b = needed_.steps[static_cast<std::size_t>(i)];
        if (!(std::abs(a.up - b.up) <= tolerance && std::abs(a.down - b.down) <= tolerance)) return true;
    }
    return false;
}

ColumnFilter::Verdict ColumnFilter::judge(const CurveColumn& column, bool isEnd) {
    Verdict verdict{false, true};
    if (run_ > 0) {
        const float tolerance = kTolerance / static_cast<float>(run_);
        const bool bends = differs(column, tolerance) || (run_ > 1 && differs(previous_, tolerance));
        // Without the column before, a flat stretch would become a ramp towards this one.
        verdict = {bends && run_ > 1, bends || isEnd};
    }
    if (verdict.current) {
        needed_ = column;
        run_ = 0;
    }
    ++run_;
    previous_ = column;
    return verdict;
}

}  // namespace vanta::gui
