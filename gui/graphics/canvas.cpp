#include "gui/graphics/canvas.hpp"

#include <algorithm>

#include "gui/graphics/bitmap.hpp"
#include "gui/graphics/curve.hpp"
#include "gui/graphics/text.hpp"
#include "gui/graphics/three_slices.hpp"

namespace vanta::gui {
namespace {

/// The origin of a canvas moved to a whole device pixel, and the clip in the owner's coordinates, where it
/// stays what it is.
struct Placement {
    explicit Placement(const Canvas& canvas)
        : scale(canvas.scale()),
          origin{static_cast<float>(toDevice(canvas.origin.value().x, scale)) / scale,
                 static_cast<float>(toDevice(canvas.origin.value().y, scale)) / scale},
          clip(canvas.clip.value().translated(canvas.origin)) {}

    /// What is left of a rectangle, in the owner's coordinates.
    Rect clipped(const Rect& rect) const { return rect.translated(origin).intersected(clip); }

    /// The point of a picture that belongs to the corner of what is left of its target. Counted in device
    /// pixels: a clip must not shift a picture.
    Point movedSource(const Rect& target, const Rect& left, Point source) const {
        const auto moved = [&](float from, float whole, float cut) {
            const int pixels = toDevice(from, scale) + toDevice(cut, scale) - toDevice(whole, scale);
            return static_cast<float>(pixels) / scale;
        };
        const Rect whole = target.translated(origin);
        return {moved(source.x, whole.left, left.left), moved(source.y, whole.top, left.top)};
    }

    float scale;
    Point origin;
    Rect clip;
};

struct StretchAxes {
    StretchAxes(const Rect& target, const Rect& source, float minimumEnd, float scale)
        : x(source.width(), target.width(), source.height(), minimumEnd, scale),
          y(source.height(), target.height(), source.width(), minimumEnd, scale) {}
    ThreeSlices x;
    ThreeSlices y;
};

}  // namespace

void Canvas::setState(const State& state) {
    clip = state.clip;
    alpha = state.alpha;
    origin = state.origin;
}

void Canvas::fillRect(const Rect& rect, Color color) {
    const Rect target = Placement(*this).clipped(rect);
    if (!target.isEmpty()) owner_.fillRect(target, color.withAlpha(alpha));
}

void Canvas::drawFrame(const Rect& rect, Color color, float width) {
    fillRect({rect.left - width, rect.top - width, rect.right + width, rect.top}, color);
    fillRect({rect.left - width, rect.bottom, rect.right + width, rect.bottom + width}, color);
    fillRect({rect.left - width, rect.top, rect.left, rect.bottom}, color);
    fillRect({rect.right, rect.top, rect.right + width, rect.bottom}, color);
}

void Canvas::drawLine(Point from, Point to, Color color, float width) {
    const Placement place(*this);
    if (place.clip.isEmpty()) return;
    owner_.drawLine(from + place.origin, to + place.origin, color.withAlpha(alpha), width, place.clip);
}

void Canvas::drawPoint(Point point, Color color) {
    fillRect(Rect::ofSize(point.x, point.y, 1.0f, 1.0f), color);
}

void Canvas::drawBitmap(const Bitmap& bitmap, Point point, int opacity) {
    drawBitmap(bitmap, bitmap.logicalRect().translated(point), {}, opacity);
}

void Canvas::drawBitmap(const Bitmap& bitmap, const Rect& target, Point source, int opacity) {
    const Placement place(*this);
    const Rect left = place.clipped(target);
    if (left.isEmpty()) return;
    owner_.drawBitmap(bitmap, left, place.movedSource(target, left, source), multiplyBytes(alpha, opacity));
}

void Canvas::drawBitmapMasked(const Bitmap& bitmap, const Rect& target, Point source, const Bitmap& mask,
                              Point maskSource, int opacity) {
    const Placement place(*this);
    const Rect left = place.clipped(target);
    if (left.isEmpty()) return;
    owner_.drawBitmapMasked(bitmap, left, place.movedSource(target, left, source), mask,
                            place.movedSource(target, left, maskSource), multiplyBytes(alpha, opacity));
}

void Canvas::drawText(Text& text, Point point, int opacity) {
    drawBitmap(text.bitmap(), {point.x, point.y + text.baselineOffset()}, opacity);
}

void Canvas::drawStretched(const Bitmap& bitmap, const Rect& target, const Rect& source, float minimumEnd,
                           int opacity) {
    if (target.isEmpty() || source.isEmpty()) return;
    const StretchAxes axes(target, source, minimumEnd, scale());
    axes.y.forEachPiece([&](float y, float height, float sourceY) {
        axes.x.forEachPiece([&](float x, float width, float sourceX) {
            drawBitmap(bitmap, Rect::ofSize(target.left + x, target.top + y, width, height),
                       {source.left + sourceX, source.top + sourceY}, opacity);
        });
    });
}

Point Canvas::stretchedPoint(const Bitmap& bitmap, const Rect& target, Point point, float minimumEnd) const {
    const StretchAxes axes(target, bitmap.logicalRect(), minimumEnd, scale());
    return {axes.x.sourceOf(point.x - target.left), axes.y.sourceOf(point.y - target.top)};
}

void Canvas::drawCurve(Curve& curve, Color line, Color above, Color below, float lineWidth, const Rect& area,
                       Point curveOrigin, CurveOrientation orientation) {
    CurveSet set;
    set.top = above;
    set.bottom = below;
    set.entries[0].curve = &curve;
    set.entries[0].above = above;
    set.entries[0].line = line;
    set.entries[0].below = below;
    set.entries[0].lineWidth = lineWidth;
    drawCurves(set, area, curveOrigin, orientation);
}

void Canvas::drawCurves(const CurveSet& set, const Rect& area, Point curveOrigin,
                        CurveOrientation orientation) {
    const Placement place(*this);
    const Rect left = place.clipped(area);
    if (left.isEmpty()) return;
    owner_.drawCurves(set, left, area.translated(place.origin), curveOrigin + place.origin, orientation,
                      alpha);
}

}  // namespace vanta::gui
