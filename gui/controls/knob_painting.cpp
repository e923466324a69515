#include <numbers>

#include "gui/controls/knob.hpp"
#include "gui/controls/picture.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {
namespace {

/// Turns by which the overlay may be off.
constexpr float kAngleTolerance = 0.001f;

}  // namespace

Knob::Style::Style(UserInterface& interface) : Component(interface) {
    setImages({}, {}, {}, {}, {}, {});
    focus = loadPicture(interface, {});
}

void Knob::Style::setImages(const std::string& backAtRest, const std::string& backHovered,
                            const std::string& overlayAtRest, const std::string& overlayHovered,
                            const std::string& overlayDragged, const std::string& overlayGripHovered) {
    backNormal = loadPicture(ui(), backAtRest);
    backActive = loadPicture(ui(), backHovered);
    overlayNormal = loadPicture(ui(), overlayAtRest);
    overlayActive = loadPicture(ui(), overlayHovered);
    overlayDown = loadPicture(ui(), overlayDragged);
    overlayRotate = loadPicture(ui(), overlayGripHovered);
}

void Knob::Style::setImages(const std::string& family) {
    setImages(family + "BackNormal", family + "BackActive", family + "OverlayNormal",
              family + "OverlayActive", family + "OverlayDown", family + "OverlayRotate");
    focus = loadPicture(ui(), family + "Focus");
}

/// Another scale has other pixels.
void Knob::refreshTree() {
    rotatedFrom_ = nullptr;
    RolloverValueControl::refreshTree();
}

const Bitmap& Knob::overlay() const {
    if (hoverState_ == Hover::OverRing) {
        return dragMode_ == Drag::None ? *style_->overlayRotate : *style_->overlayDown;
    }
    const bool isActive = hoverState_ == Hover::OverKnob || dragMode_ != Drag::None;
    return isActive ? *style_->overlayActive : *style_->overlayNormal;
}

/// Turning is dear; most paints find the overlay as they left it.
void Knob::turnOverlay() {
    const Bitmap& wanted = overlay();
    const float turned = angle();
    if (&wanted == rotatedFrom_ && KnobGeometry::distance(turned, rotatedBy_) <= kAngleTolerance) return;
    if (!rotated_) rotated_ = ui().createBitmap();
    const Rect& size = wanted.logicalRect();
    rotated_->setLogicalSize(size.width(), size.height());
    const float halfPixel = 0.5f / ui().deviceBacking().scale();
    const Point centre{size.width() / 2.0f - halfPixel, size.height() / 2.0f - halfPixel};
    rotated_->rotateFrom(wanted, turned * 2.0f * std::numbers::pi_v<float>, centre, centre);
    rotatedFrom_ = &wanted;
    rotatedBy_ = turned;
}

void Knob::paint(Canvas& canvas) {
    const RolloverManager::Look back = rollover().crossfade(*style_->backNormal, *style_->backActive);
    canvas.drawBitmap(back.picture, Point{}, back.alpha);
    if (!style_->hasOverlay()) return;
    turnOverlay();
    canvas.drawBitmap(*rotated_, Point{});
}

}  // namespace vanta::gui
