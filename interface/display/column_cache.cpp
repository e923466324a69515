#include "interface/display/column_cache.hpp"

#include <algorithm>
#include <cmath>

namespace vanta::interface {
namespace {

/// So few rows, in logical units, that what is made of them is still near when it is painted.
constexpr float kBandHeight = 16.0f;

}  // namespace

void ColumnCache::release() {
    picture_.reset();
    band_.reset();
    columns_ = 0.0f;
}

void ColumnCache::extend(gui::UserInterface& interface, const gui::Rect& size, float columns,
                         const Draw& draw) {
    if (!picture_) picture_ = interface.createBitmap();
    picture_->setLogicalSize(size.width(), size.height());
    // Another scale of the device has cleared it as well.
    if (picture_->pixelRect() != pixels_) columns_ = 0.0f;
    pixels_ = picture_->pixelRect();
    if (columns < columns_) columns_ = 0.0f;
    if (columns == columns_) return;
    const gui::Rect missing{columns_, 0.0f, columns, size.height()};
    clear(missing);
    gui::Canvas& canvas = picture_->canvas();
    canvas.clip = missing;
    draw(canvas);
    columns_ = columns;
}

/// No more than what is drawn on next: a whole picture takes as long as a frame may.
void ColumnCache::clear(const gui::Rect& area) {
    picture_->hasAlpha = true;
    const gui::DeviceRect part = gui::toDevice(area, picture_->scale()).intersected(picture_->pixelRect());
    for (int y = part.top; y < part.bottom; ++y) {
        std::fill_n(picture_->row(y) + part.left, part.width(), gui::kTransparentPixel);
    }
}

void ColumnCache::paint(gui::Canvas& canvas) const {
    if (columns_ <= 0.0f) return;
    canvas.drawBitmap(*picture_, gui::Rect{0.0f, 0.0f, columns_, picture_->logicalRect().height()},
                      {0.0f, 0.0f});
}

float ColumnCache::paintSqueezed(gui::UserInterface& interface, gui::Canvas& canvas, float factor) {
    const float right = std::trunc(columns_ * factor);
    if (right <= 0.0f) return 0.0f;
    if (!band_) band_ = interface.createBitmap();
    const gui::Rect& all = picture_->logicalRect();
    // One more than it shows: where a band starts between two pixels it may need another row.
    band_->setLogicalSize(all.width(), kBandHeight + 1.0f);
    for (float top = 0.0f; top < all.bottom; top += kBandHeight) {
        band_->squeezeFrom(*picture_, gui::toDevice(top, picture_->scale()), factor);
        canvas.drawBitmap(*band_, gui::Rect{0.0f, top, right, std::min(top + kBandHeight, all.bottom)},
                          {0.0f, 0.0f});
    }
    return right;
}

}  // namespace vanta::interface
