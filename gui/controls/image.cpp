#include "gui/controls/image.hpp"

#include <algorithm>

#include "gui/controls/alignment.hpp"
#include "gui/controls/picture.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {

Image::Image(UserInterface& interface, const std::string& imageName)
    : Control(interface), bitmap_(loadPicture(interface, {})) {
    if (!imageName.empty()) load(imageName);
}

void Image::load(const std::string& imageName) {
    bitmap_ = loadPicture(ui(), imageName);
    takeSize();
    markDirty();
}

void Image::takeSize() {
    if (stretchMode != StretchMode::None || bitmap_->isEmpty()) return;
    setSize(bitmap_->logicalRect().width(), bitmap_->logicalRect().height());
}

void Image::propertyChanged(AbstractProperty& property) {
    Control::propertyChanged(property);
    if (&property == &stretchMode) takeSize();
    if (&property == &stretchMode || &property == &origin || &property == &tile) markDirty();
}

int Image::alphaAt(Point point) {
    if (stretchMode != StretchMode::None) return 255;
    return opacityAt(*bitmap_, point + origin.value());
}

void Image::paint(Canvas& canvas) {
    const Rect& size = bitmap_->logicalRect();
    const Rect& all = localBounds();
    if (bitmap_->isEmpty()) return;
    switch (stretchMode) {
        case StretchMode::None:
            canvas.drawBitmap(*bitmap_, all, origin);
            break;
        case StretchMode::Stretched:
            canvas.drawStretched(*bitmap_, all, size, tile);
            break;
        case StretchMode::Tiled: {
            const float step = std::max(tile > 0.0f ? tile.value() : size.width(), 1.0f);
            for (float x = 0.0f; x < all.width(); x += step) canvas.drawBitmap(*bitmap_, Point{x, 0.0f});
            break;
        }
    }
}

ImageLabel::ImageLabel(UserInterface& interface, const std::string& imageName)
    : Control(interface), bitmap_(loadPicture(interface, imageName)), text_(interface.createText()) {
    text_->fontSize = 7.5f;
    text_->color = Color::of(0xFFF0E9E6);
    text_->onChange.setHandler(this, &ImageLabel::textChanged);
}

float ImageLabel::fittingWidth() {
    return text_->width() + 2.0f * kMargin;
}

void ImageLabel::paint(Canvas& canvas) {
    const Rect& all = localBounds();
    canvas.drawStretched(*bitmap_, all, bitmap_->logicalRect());
    canvas.drawText(*text_, {(all.width() - text_->width()) / 2.0f, centredTop(*text_, all.height())});
}

}  // namespace vanta::gui
