#include <algorithm>
#include <utility>

#include "gui/graphics/bitmap.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {
namespace {

/// Some rows of the target by rows of the picture; what is missing on the right shows its right part once
/// more.
void drawRows(Bitmap& target, const Bitmap& picture, float top, float sourceTop, float height) {
    Canvas& canvas = target.canvas();
    const float own = picture.logicalRect().width();
    const float width = target.logicalRect().width();
    for (float left = 0.0f; left < width && own > 0.0f; left += own) {
        const float strip = std::min(own, width - left);
        canvas.drawBitmap(picture, Rect::ofSize(left, top, strip, height),
                          {left > 0.0f ? own - strip : 0.0f, sourceTop});
    }
}

/// What is missing below repeats the last row, so that a gradient ends in its last colour.
void drawGrown(Bitmap& target, const Bitmap& picture, float pixel) {
    const float own = picture.logicalRect().height();
    const float height = target.logicalRect().height();
    drawRows(target, picture, 0.0f, 0.0f, std::min(own, height));
    for (float top = own; top < height; top += pixel) drawRows(target, picture, top, own - pixel, pixel);
}

}  // namespace

void UserInterface::loadBackdrop(const std::string& imageName) {
    std::unique_ptr<Bitmap> picture = createBitmap();
    picture->load(imageName);
    const Rect& room = rootControl().localBounds();
    if (!isSame(picture->logicalRect(), room)) {
        std::unique_ptr<Bitmap> grown = createBitmap();
        grown->setLogicalSize(room.width(), room.height());
        if (!grown->isEmpty()) drawGrown(*grown, *picture, 1.0f / deviceBacking().scale());
        picture = std::move(grown);
    }
    backdrop_ = std::move(picture);
    backdropName_ = imageName;
    rootControl().markDirty();
}

bool UserInterface::paintBackdrop(Canvas& canvas) {
    if (!backdrop_ || backdrop_->isEmpty()) return false;
    canvas.drawBitmap(*backdrop_, Point{});
    return true;
}

}  // namespace vanta::gui
