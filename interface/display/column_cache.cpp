#include "interface/display/column_cache.hpp"

namespace vanta::interface {

void ColumnCache::release() {
    picture_.reset();
    columns_ = 0.0f;
}

void ColumnCache::extend(gui::UserInterface& interface, const gui::Rect& size, float columns,
                         const Draw& draw) {
    if (!picture_) picture_ = interface.createBitmap();
    picture_->setLogicalSize(size.width(), size.height());
    // Another scale of the device has cleared it as well.
    if (picture_->pixelRect() != pixels_) columns_ = 0.0f;
    pixels_ = picture_->pixelRect();
    if (columns_ <= 0.0f || columns < columns_) {
        picture_->hasAlpha = true;
        picture_->fill();
        columns_ = 0.0f;
    }
    if (columns <= columns_) return;
    gui::Canvas& canvas = picture_->canvas();
    canvas.clip = gui::Rect{columns_, 0.0f, columns, size.height()};
    draw(canvas);
    columns_ = columns;
}

void ColumnCache::paint(gui::Canvas& canvas) const {
    if (columns_ <= 0.0f) return;
    canvas.drawBitmap(*picture_, gui::Rect{0.0f, 0.0f, columns_, picture_->logicalRect().height()},
                      {0.0f, 0.0f});
}

}  // namespace vanta::interface
