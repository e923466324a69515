#include "gui/controls/shape.hpp"

#include <algorithm>

#include "gui/graphics/bitmap.hpp"
#include "gui/graphics/canvas.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {

Shape::Shape(UserInterface& interface) : Control(interface) {}

Shape::~Shape() = default;

Rect Shape::inside() const {
    const Rect& all = localBounds();
    const float border = borderWidth;
    return {all.left + border, all.top + border, all.right - border, all.bottom - border};
}

float Shape::positionOf(Point point) const {
    const Rect& all = localBounds();
    const float x = point.x / std::max(all.width(), 1.0f), y = point.y / std::max(all.height(), 1.0f);
    switch (direction) {
        case Direction::Left:
            return 1.0f - x;
        case Direction::Up:
            return 1.0f - y;
        case Direction::Right:
            return x;
        case Direction::Down:
            break;
    }
    return y;
}

int Shape::alphaAt(Point point) {
    if (!inside().contains(point)) return borderColor.value().alpha;
    if (kind == Kind::Frame) return 0;
    if (gradient.value().isEmpty()) return color.value().alpha;
    return gradient.value().at(positionOf(point)).alpha;
}

void Shape::propertyChanged(AbstractProperty& property) {
    Control::propertyChanged(property);
    gradientPicture_.reset();
    markDirty();
}

void Shape::resized() {
    gradientPicture_.reset();
    Control::resized();
}

void Shape::refreshTree() {
    gradientPicture_.reset();
    Control::refreshTree();
}

/// Strips a device pixel wide cost far more than a picture of them.
void Shape::buildGradient() {
    const Rect room = inside();
    gradientPicture_ = ui().createBitmap();
    gradientPicture_->setLogicalSize(localBounds().width(), localBounds().height());
    if (gradientPicture_->isEmpty() || room.isEmpty()) return;
    gradientPicture_->hasAlpha = true;
    gradientPicture_->fill();
    paintGradient(gradientPicture_->canvas());
}

/// One strip a device pixel, so that it is as smooth at each scale.
void Shape::paintGradient(Canvas& canvas) const {
    const Rect room = inside();
    const bool upright = direction == Direction::Up || direction == Direction::Down;
    const float step = 1.0f / canvas.scale();
    const float end = upright ? room.bottom : room.right;
    for (float at = upright ? room.top : room.left; at < end; at += step) {
        const float next = std::min(at + step, end);
        const Rect strip =
            upright ? Rect{room.left, at, room.right, next} : Rect{at, room.top, next, room.bottom};
        const float middle = (at + next) / 2.0f;
        canvas.fillRect(strip, gradient.value().at(positionOf({middle, middle})));
    }
}

void Shape::paint(Canvas& canvas) {
    const Rect room = inside();
    if (kind == Kind::Rectangle && gradient.value().isEmpty()) canvas.fillRect(room, color);
    if (kind == Kind::Rectangle && !gradient.value().isEmpty()) {
        if (!gradientPicture_) buildGradient();
        canvas.drawBitmap(*gradientPicture_, Point{});
    }
    if (borderWidth > 0.0f) canvas.drawFrame(room, borderColor, borderWidth);
}

}  // namespace vanta::gui
