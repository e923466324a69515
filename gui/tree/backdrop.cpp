#include <algorithm>
#include <utility>

#include "gui/graphics/bitmap.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {
namespace {

/// What is missing on the right shows the picture's right part once more.
void drawGrown(Bitmap& target, const Bitmap& picture) {
    Canvas& canvas = target.canvas();
    canvas.drawBitmap(picture, Point{});
    const float own = picture.logicalRect().width();
    const float width = target.logicalRect().width();
    for (float left = own; left < width && own > 0.0f; left += own) {
        const float strip = std::min(own, width - left);
        canvas.drawBitmap(picture, Rect::ofSize(left, 0.0f, strip, picture.logicalRect().height()),
                          {own - strip, 0.0f});
    }
}

}  // namespace

void UserInterface::loadBackdrop(const std::string& imageName) {
    std::unique_ptr<Bitmap> picture = createBitmap();
    picture->load(imageName);
    const Rect& room = rootControl().localBounds();
    if (!isSame(picture->logicalRect(), room)) {
        std::unique_ptr<Bitmap> grown = createBitmap();
        grown->setLogicalSize(room.width(), room.height());
        if (!grown->isEmpty()) drawGrown(*grown, *picture);
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
