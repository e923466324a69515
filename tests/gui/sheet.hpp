#pragma once

#include <vector>

#include "gui/graphics/bitmap.hpp"

namespace vanta::test {

inline std::vector<gui::Pixel> pixelsOf(const gui::Bitmap& bitmap) {
    if (bitmap.isEmpty()) return {};
    return {bitmap.row(0), bitmap.row(0) + bitmap.pixelRect().width() * bitmap.pixelRect().height()};
}

/// The bounds of what differs from the ground.
inline gui::DeviceRect inkOf(const gui::Bitmap& bitmap, gui::Pixel ground = gui::kTransparentPixel) {
    gui::DeviceRect bounds{};
    for (int y = 0; y < bitmap.pixelRect().bottom; ++y) {
        for (int x = 0; x < bitmap.pixelRect().right; ++x) {
            if (bitmap.row(y)[x] != ground) bounds = bounds.united({x, y, x + 1, y + 1});
        }
    }
    return bounds;
}

/// A bitmap to draw on, of a logical size at a scale; black unless told.
struct Sheet {
    Sheet(float width, float height, float scale, gui::Color ground = {0, 0, 0, 255}) {
        backing.setScale(scale);
        bitmap.setLogicalSize(width, height);
        bitmap.fill(ground);
    }
    gui::Canvas& canvas() { return bitmap.canvas(); }
    std::vector<gui::Pixel> pixels() const { return pixelsOf(bitmap); }
    gui::Color at(int x, int y) const { return gui::toColor(bitmap.row(y)[x]); }
    /// The bounds of what is not black.
    gui::DeviceRect ink() const { return inkOf(bitmap, 0); }

    gui::DeviceBacking backing;
    gui::Bitmap bitmap{backing};
};

}  // namespace vanta::test
