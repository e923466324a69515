#pragma once

#include <array>

#include "gui/graphics/curve.hpp"
#include "gui/graphics/curve_stepper.hpp"

namespace vanta::gui {

/// Where a column of a curve changes its colour, in device pixels along the curve's values: up to the glow's
/// top it has what lies above, then a ramp to the line's colour, which it has from the core's top to its
/// bottom, then a ramp to what lies below the glow's bottom.
struct CurveBand {
    float glowTop;
    float coreTop;
    float coreBottom;
    float glowBottom;
};

/// A column of a set of curves.
struct CurveColumn {
    int column;  ///< in device pixels from the curves' origin
    std::array<CurveBand, 2> bands;
    std::array<CurveStepper::Step, 2> steps;
};

/// The shape of a set of curves, column by column, whoever draws it. Two curves never overlap: the upper one
/// gives way.
class CurveOutline {
public:
    /// A pixel's colour is that of its middle, so the x of a column lies just before it.
    static constexpr float kColumnCenter = 0.499f;

    /// From the column `first` on. `yOffset` is where the curves' zero lies and `areaBottom` where the area
    /// ends, both in device pixels.
    CurveOutline(const CurveSet& set, int first, float yOffset, float areaBottom, float scale);

    void next(CurveColumn& column);
    int count() const { return count_; }

private:
    int count_;
    float areaBottom_;
    std::array<CurveStepper, 2> steppers_;
    int column_;
};

/// Tells which columns of an outline a renderer needs that joins them with straight lines.
class ColumnFilter {
public:
    explicit ColumnFilter(int curveCount) : curveCount_(curveCount) {}

    struct Verdict {
        bool previous;  ///< the column before is needed, too, and was not so far
        bool current;
    };
    /// For each column in turn; `isEnd` for one that is needed anyway, as the last. The first is always
    /// needed.
    Verdict judge(const CurveColumn& column, bool isEnd);

private:
    bool differs(const CurveColumn& column, float tolerance) const;

    int curveCount_;
    int run_ = 0;  ///< columns since the one that was needed last
    CurveColumn needed_{};
    CurveColumn previous_{};
};

/// Calls emit(column) for those of `columnCount` + 1 columns that the filter lets through, and for those of
/// which wants(column) says that they must not be left out: one column lies beyond the right edge, since the
/// last pixel's middle lies beyond the x of its column.
template <typename Emit, typename Wants>
void forEachNeededColumn(CurveOutline& outline, int columnCount, Emit&& emit, Wants&& wants) {
    ColumnFilter filter(outline.count());
    CurveColumn both[2]{};
    for (int i = 0; i <= columnCount; ++i) {
        CurveColumn& column = both[i & 1];
        const CurveColumn& previous = both[~i & 1];
        outline.next(column);
        const ColumnFilter::Verdict verdict = filter.judge(column, i == columnCount || wants(column));
        if (verdict.previous) emit(previous);
        if (verdict.current) emit(column);
    }
}

template <typename Emit>
void forEachNeededColumn(CurveOutline& outline, int columnCount, Emit&& emit) {
    forEachNeededColumn(outline, columnCount, emit, [](const CurveColumn&) { return false; });
}

}  // namespace vanta::gui
