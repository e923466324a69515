// Bitmaps as what a canvas draws on.

#include <algorithm>
#include <cstring>

#include "gui/graphics/bitmap.hpp"
#include "gui/graphics/copied_area.hpp"
#include "gui/graphics/curve_painter.hpp"
#include "gui/graphics/line_painter.hpp"
#include "gui/graphics/pixel_view.hpp"
#include "kernel/pixel_rows.hpp"

namespace vanta::gui {
namespace {

std::size_t countOf(const CopiedArea& copy) {
    return static_cast<std::size_t>(copy.target.width());
}

}  // namespace

void blendRun(Pixel pixel, Pixel* target, int count) {
    if (opacityOf(pixel) == 255) {
        std::fill_n(target, count, pixel);
    } else {
        kernel::blendPixel(pixel, target, static_cast<std::size_t>(count));
    }
}

void Bitmap::drawBitmap(const Bitmap& bitmap, const Rect& target, Point source, int alpha) {
    CopiedArea copy = CopiedArea::of(target, source, scale());
    copy.clipTarget(pixelRect_);
    copy.clipSource(bitmap.pixelRect_, copy.source);
    if (copy.target.isEmpty() || alpha <= 0) return;
    const std::size_t count = countOf(copy);
    for (int y = 0; y < copy.target.height(); ++y) {
        const Pixel* from = bitmap.row(copy.source.y + y) + copy.source.x;
        Pixel* to = row(copy.target.top + y) + copy.target.left;
        if (alpha < 255) {
            kernel::blendFadedRow(from, static_cast<std::uint32_t>(alpha), to, count);
        } else if (bitmap.hasAlpha) {
            kernel::blendRow(from, to, count);
        } else {
            std::memmove(to, from, count * sizeof(Pixel));
        }
    }
    markDirty(copy.target);
}

void Bitmap::drawBitmapMasked(const Bitmap& bitmap, const Rect& target, Point source, const Bitmap& mask,
                              Point maskSource, int alpha) {
    CopiedArea copy = CopiedArea::of(target, source, scale());
    const DevicePoint toMask =
        DevicePoint{toDevice(maskSource.x, scale()), toDevice(maskSource.y, scale())} - copy.source;
    copy.clipTarget(pixelRect_);
    copy.clipSource(bitmap.pixelRect_, copy.source);
    copy.clipSource(mask.pixelRect_, copy.source + toMask);
    if (copy.target.isEmpty() || alpha <= 0) return;
    const DevicePoint inMask = copy.source + toMask;
    for (int y = 0; y < copy.target.height(); ++y) {
        kernel::blendMaskedRow(bitmap.row(copy.source.y + y) + copy.source.x,
                               mask.row(inMask.y + y) + inMask.x, static_cast<std::uint32_t>(alpha),
                               row(copy.target.top + y) + copy.target.left, countOf(copy));
    }
    markDirty(copy.target);
}

void Bitmap::fillRect(const Rect& rect, Color color) {
    const DeviceRect target = toDevice(rect, scale()).intersected(pixelRect_);
    if (target.isEmpty() || color.alpha == 0) return;
    for (int y = target.top; y < target.bottom; ++y) {
        blendRun(toPixel(color), row(y) + target.left, target.width());
    }
    markDirty(target);
}

void Bitmap::drawPoint(Point point, Color color) {
    fillRect(Rect::ofSize(point.x, point.y, 1.0f, 1.0f), color);
}

Color Bitmap::pixelAt(Point point) const {
    const DevicePoint at{toDevice(point.x, scale()), toDevice(point.y, scale())};
    return pixelRect_.contains(at) ? toColor(row(at.y)[at.x]) : Color{};
}

void Bitmap::drawLine(Point from, Point to, Color color, float width, const Rect& clip) {
    const DeviceRect bounds = toDevice(clip, scale()).intersected(pixelRect_);
    if (bounds.isEmpty() || color.alpha == 0) return;
    const PixelView view{pixels_.get(), pixelRect_.right, bounds};
    const DeviceRect changed = paintLine(view, from, to, width, scale(), toPixel(color));
    if (!changed.isEmpty()) markDirty(changed);
}

void Bitmap::drawCurves(const CurveSet& set, const Rect& clip, const Rect& area, Point origin,
                        Canvas::CurveOrientation orientation, int alpha) {
    const DeviceRect bounds = toDevice(clip, scale()).intersected(pixelRect_);
    if (bounds.isEmpty() || alpha <= 0) return;
    const DevicePoint at{toDevice(origin.x, scale()), toDevice(origin.y, scale())};
    paintCurves({pixels_.get(), pixelRect_.right, bounds}, set, toDevice(area, scale()), at, orientation,
                alpha, scale());
    markDirty(bounds);
}

}  // namespace vanta::gui
