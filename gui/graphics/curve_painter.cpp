#include "gui/graphics/curve_painter.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "gui/graphics/curve_colors.hpp"
#include "gui/graphics/curve_outline.hpp"
#include "kernel/pixel_rows.hpp"

namespace vanta::gui {
namespace {

constexpr int kTileColumns = 64;

/// The first pixel whose middle lies at or below a position, within `low` to `high`.
int pixelFrom(float position, int low, int high) {
    const float first = position - 0.5f;
    if (!(first > static_cast<float>(low))) return low;
    if (!(first < static_cast<float>(high))) return high;
    const int whole = static_cast<int>(first);
    return static_cast<float>(whole) < first ? whole + 1 : whole;
}

/// 256ths of the way from one position to the next, for each pixel.
float rateOf(float firstAt, float lastAt) {
    return 256.0f / std::max(lastAt - firstAt, 0.001f);
}

/// A column of pixels, some way apart in memory.
class PixelColumn {
public:
    PixelColumn(Pixel* first, std::ptrdiff_t distance) : base_(first), step_(distance) {}

    void fill(Pixel pixel, int from, int to) const {
        for (int i = from; i < to; ++i) base_[i * step_] = pixel;
    }
    /// From one colour at a position to another at the next.
    void ramp(Pixel first, Pixel last, float firstAt, float lastAt, int from, int to) const {
        if (from >= to) return;
        if (first == last) return fill(first, from, to);
        const float rate = rateOf(firstAt, lastAt);
        for (int i = from; i < to; ++i) {
            base_[i * step_] =
                mixPixels(first, last, weightOf((static_cast<float>(i) + 0.5f - firstAt) * rate));
        }
    }
    /// From what lies above to the line and on to what lies below. In one loop without a branch: bands of a
    /// few pixels, each of another height, are all that most curves have.
    void band(const CurveBand& rows, Pixel above, Pixel line, Pixel below, int from, int to) const {
        const float rise = 256.0f / std::max(rows.coreTop - rows.glowTop, 0.001f);
        const float fall = 256.0f / std::max(rows.glowBottom - rows.coreBottom, 0.001f);
        const std::uint64_t upper = spreadPixel(above), core = spreadPixel(line), lower = spreadPixel(below);
        Pixel* pixel = base_ + from * step_;
        for (int i = from; i < to; ++i, pixel += step_) {
            const float y = static_cast<float>(i) + 0.5f;
            const float weight = std::min((y - rows.glowTop) * rise, (rows.glowBottom - y) * fall);
            *pixel = mixSpreadPixels(y < rows.coreTop ? upper : lower, core, weightOf(weight));
        }
    }

private:
    static unsigned weightOf(float weight) {
        return static_cast<unsigned>(static_cast<int>(std::min(std::max(weight, 0.0f), 256.0f) + 0.5f));
    }

    Pixel* base_;
    std::ptrdiff_t step_;
};

/// Works in the coordinates of a curve over x: columns along x, bands along y. The vertical orientation
/// exchanges them where pixels are touched. Some columns at a time get their colours in a tile, which is
/// then laid over the target; what is plain above and below all bands needs no tile.
class CurvePainter {
public:
    CurvePainter(const PixelView& view, const CurveSet& set, const DeviceRect& area, DevicePoint origin,
                 bool isVertical, int alpha, float scale)
        : view_(view),
          isVertical_(isVertical),
          clip_(upright(view.clip)),
          area_(upright(area)),
          origin_(isVertical ? DevicePoint{origin.y, origin.x} : origin),
          colors_(set, alpha, area_.top, area_.bottom),
          outline_(set, clip_.left - origin_.x, static_cast<float>(origin_.y),
                   static_cast<float>(area_.bottom), scale),
          isPlainAbove_(colors_.top == colors_.entries[0].above),
          isPlainBelow_(colors_.bottom == colors_.entries[lastEntry()].below),
          tile_(static_cast<std::size_t>(kTileColumns) * static_cast<std::size_t>(clip_.height())) {}

    void paint() {
        for (int x = clip_.left; x < clip_.right; x += kTileColumns) {
            paintTile(x, std::min(kTileColumns, clip_.right - x));
        }
    }

private:
    DeviceRect upright(const DeviceRect& rect) const {
        return isVertical_ ? DeviceRect{rect.top, rect.left, rect.bottom, rect.right} : rect;
    }
    std::size_t lastEntry() const { return static_cast<std::size_t>(outline_.count()) - 1; }

    void paintTile(int left, int count) {
        std::array<CurveColumn, kTileColumns> columns;
        float highest = static_cast<float>(clip_.bottom), lowest = static_cast<float>(clip_.top);
        for (int i = 0; i < count; ++i) {
            CurveColumn& column = columns[static_cast<std::size_t>(i)];
            outline_.next(column);
            highest = std::min(highest, column.bands[0].glowTop);
            lowest = std::max(lowest, column.bands[lastEntry()].glowBottom);
        }
        // What is a ramp needs the tile as well.
        int top = clip_.top, bottom = clip_.bottom;
        if (isPlainAbove_) {
            top = pixelFrom(highest, clip_.top, clip_.bottom);
            fillPlain(colors_.top, {left, clip_.top, left + count, top});
        }
        if (isPlainBelow_) {
            bottom = pixelFrom(lowest, top, clip_.bottom);
            fillPlain(colors_.bottom, {left, bottom, left + count, clip_.bottom});
        }
        if (top >= bottom) return;
        tileHeight_ = bottom - top;
        if (isPlainBelow_) std::fill_n(tile_.data(), kTileColumns * (bottom - top), colors_.bottom);
        for (int i = 0; i < count; ++i) paintColumn(columns[static_cast<std::size_t>(i)], i, top, bottom);
        if (hasRowsBelow()) paintRowsBelow(count, top, bottom);
        blendTile({left, top, left + count, bottom});
    }

    /// The tile holds rows of the target, whichever way the curve runs.
    PixelColumn columnOfTile(int i, int top) {
        if (isVertical_) return {tile_.data() + static_cast<std::ptrdiff_t>(i) * tileHeight_ - top, 1};
        return {tile_.data() + i - static_cast<std::ptrdiff_t>(top) * kTileColumns, kTileColumns};
    }

    void paintColumn(const CurveColumn& column, int index, int top, int bottom) {
        const PixelColumn target = columnOfTile(index, top);
        Pixel color = colors_.top;
        float colorAt = static_cast<float>(area_.top);
        int y = top;
        // The tile was filled with what lies below.
        const bool isFilled = isPlainAbove_ && isPlainBelow_ && colors_.top == colors_.bottom;
        for (std::size_t e = 0; e <= lastEntry(); ++e) {
            const CurveBand& band = column.bands[e];
            const CurveColors::Entry& colors = colors_.entries[e];
            const int bandTop = pixelFrom(band.glowTop, y, bottom);
            const int bandBottom = pixelFrom(band.glowBottom, bandTop, bottom);
            if (e > 0 || !isFilled) target.ramp(color, colors.above, colorAt, band.glowTop, y, bandTop);
            target.band(band, colors.above, colors_.lineAt(e, column.steps[e].middle), colors.below, bandTop,
                        bandBottom);
            y = bandBottom;
            color = colors.below;
            colorAt = band.glowBottom;
        }
        if (isPlainBelow_) return;
        const float end = std::max(colorAt, static_cast<float>(area_.bottom));
        if (!hasRowsBelow()) return target.ramp(color, colors_.bottom, colorAt, end, y, bottom);
        const auto i = static_cast<std::size_t>(index);
        belowFirst_[i] = y;
        belowStart_[i] = colorAt;
        belowRate_[i] = rateOf(colorAt, end);
    }

    /// What lies below a curve over x is most of the picture, and is painted by rows.
    bool hasRowsBelow() const { return !isPlainBelow_ && !isVertical_; }

    void paintRowsBelow(int count, int top, int bottom) {
        const int begin = *std::min_element(belowFirst_.begin(), belowFirst_.begin() + count);
        kernel::rampRows({belowFirst_.data(), belowStart_.data(), belowRate_.data()},
                         colors_.entries[lastEntry()].below, colors_.bottom, begin, bottom,
                         tile_.data() + static_cast<std::ptrdiff_t>(begin - top) * kTileColumns, kTileColumns,
                         static_cast<std::size_t>(count));
    }

    void blendTile(const DeviceRect& part) {
        const DeviceRect target = upright(part);
        const std::ptrdiff_t rowLength = isVertical_ ? tileHeight_ : kTileColumns;
        const Pixel* from = tile_.data();
        for (int y = target.top; y < target.bottom; ++y, from += rowLength) {
            kernel::blendRow(from, view_.at(target.left, y), static_cast<std::size_t>(target.width()));
        }
    }

    void fillPlain(Pixel pixel, const DeviceRect& part) {
        const DeviceRect target = upright(part);
        if (pixel == kTransparentPixel || target.isEmpty()) return;
        for (int y = target.top; y < target.bottom; ++y) {
            blendRun(pixel, view_.at(target.left, y), target.width());
        }
    }

    const PixelView& view_;
    bool isVertical_;
    DeviceRect clip_;
    DeviceRect area_;
    DevicePoint origin_;
    CurveColors colors_;
    CurveOutline outline_;
    bool isPlainAbove_;  ///< of one colour, from the area's edge to the curve
    bool isPlainBelow_;
    std::vector<Pixel> tile_;
    int tileHeight_ = 0;
    // Of each column of the tile: where it runs from the curve to the bottom.
    std::array<std::int32_t, kTileColumns> belowFirst_{};
    std::array<float, kTileColumns> belowStart_{};
    std::array<float, kTileColumns> belowRate_{};
};

}  // namespace

void paintCurves(const PixelView& view, const CurveSet& set, const DeviceRect& area, DevicePoint origin,
                 Canvas::CurveOrientation orientation, int alpha, float scale) {
    CurvePainter(view, set, area, origin, orientation == Canvas::CurveOrientation::OverY, alpha, scale)
        .paint();
}

}  // namespace vanta::gui
