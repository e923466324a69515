#include "gui/graphics/line_painter.hpp"

#include <algorithm>
#include <cmath>

#include "gui/graphics/line_shape.hpp"
#include "kernel/pixel_rows.hpp"

namespace vanta::gui {
namespace {

/// Whole pixels, limited while they still fit an int.
int pixelsWithin(float position, int low, int high) {
    if (!(position > static_cast<float>(low))) return low;
    return position < static_cast<float>(high) ? static_cast<int>(position) : high;
}

DeviceRect transposed(const DeviceRect& rect) {
    return {rect.top, rect.left, rect.bottom, rect.right};
}

}  // namespace

DeviceRect paintLine(const PixelView& view, Point from, Point to, float width, float scale, Pixel color) {
    const std::optional<LineShape> shape = lineShape(from, to, width, scale);
    if (!shape) return {};
    const DeviceRect clip = shape->isSteep ? transposed(view.clip) : view.clip;
    const float slope = (shape->middle[3] - shape->middle[0]) / (shape->along[3] - shape->along[0]);
    DeviceRect changed{};
    const int first = pixelsWithin(std::floor(shape->along[0]), clip.left, clip.right);
    const int last = pixelsWithin(std::ceil(shape->along[3]), clip.left, clip.right);
    for (int x = first; x < last; ++x) {
        const float center = static_cast<float>(x) + 0.5f;
        const float middle = shape->middle[0] + slope * (center - shape->along[0]);
        const int top = pixelsWithin(std::floor(middle + shape->across[0]), clip.top, clip.bottom);
        const int bottom = pixelsWithin(std::ceil(middle + shape->across[3]), clip.top, clip.bottom);
        for (int y = top; y < bottom; ++y) {
            const float coverage = shape->coverage(center, static_cast<float>(y) + 0.5f);
            const auto weight = static_cast<unsigned>(std::lround(coverage * 256.0f));
            const Pixel pixel = mixPixels(kTransparentPixel, color, weight);
            Pixel* const target = shape->isSteep ? view.at(y, x) : view.at(x, y);
            kernel::blendPixel(pixel, target, 1);
        }
        changed = changed.united({x, top, x + 1, bottom});
    }
    return shape->isSteep ? transposed(changed) : changed;
}

}  // namespace vanta::gui
