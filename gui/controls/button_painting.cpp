#include "gui/controls/button.hpp"
#include "gui/controls/picture.hpp"

namespace vanta::gui {
namespace {

/// By which the caption of a button follows a press.
constexpr Point kPressShift{1.0f, 1.0f};

void paintCentred(Canvas& canvas, const Bitmap& picture, const Rect& room, int opacity) {
    const Rect& size = picture.logicalRect();
    canvas.drawBitmap(picture,
                      Point{(room.width() - size.width()) / 2.0f, (room.height() - size.height()) / 2.0f},
                      opacity);
}

}  // namespace

Button::Style::Style(UserInterface& interface) : Component(interface), ButtonLook(nullptr) {
    loadImages({}, {}, {}, {}, {});
}

void Button::Style::loadImages(const std::string& atRest, const std::string& hovered,
                               const std::string& pressed, const std::string& overlayAtOff,
                               const std::string& overlayAtOn) {
    normal = loadPicture(ui(), atRest);
    active = loadPicture(ui(), hovered);
    down = loadPicture(ui(), pressed);
    overlayOff = loadPicture(ui(), overlayAtOff);
    overlayOn = loadPicture(ui(), overlayAtOn);
    for (const Bitmap* picture : {normal.get(), active.get(), down.get()}) {
        if (picture->isEmpty()) continue;
        backgroundHeight = picture->logicalRect().height();
        backgroundWidth = picture->logicalRect().width();
        break;
    }
}

void Button::Style::loadKind(const std::string& kind, const std::string& overlayAtOff,
                             const std::string& overlayAtOn) {
    const std::string name = "Button" + kind;
    loadImages(name + "Normal", name + "Active", name + "Down", overlayAtOff, overlayAtOn);
}

int Button::faded(int restOpacity) {
    return rollover().mix() * (255 - restOpacity) / 255 + restOpacity;
}

void Button::paint(Canvas& canvas) {
    const RolloverManager::Look look = state_ == State::Pressed
                                           ? RolloverManager::Look{*style_->down, 255}
                                           : rollover().crossfade(*style_->normal, *style_->active);
    if (backgroundStyle == BackgroundStyle::Centred) {
        paintCentred(canvas, look.picture, localBounds(), look.alpha);
    } else {
        canvas.drawStretched(look.picture, localBounds(), look.picture.logicalRect(), 0.0f, look.alpha);
    }
    paintOverlay(canvas);
    const bool moves = state_ == State::Pressed && buttonStyle == ButtonStyle::Moving;
    const Canvas::State saved = canvas.state();
    if (moves) {
        canvas.origin = saved.origin + kPressShift;
        canvas.clip = saved.clip.translated(Point{} - kPressShift);
    }
    paintPlaced(canvas, *icon_, faded(overlayRestAlpha));
    paintTexts(canvas);
    canvas.setState(saved);
}

void Button::paintPlaced(Canvas& canvas, const Bitmap& picture, int opacity) const {
    const Rect& size = picture.logicalRect();
    const float x = alignedOffset(overlayAlignment, localBounds().width(), size.width(), overlayMargin);
    const float y = (localBounds().height() - size.height()) / 2.0f;
    canvas.drawBitmap(picture, Point{x + overlayOffset, y + overlayVerticalOffset}, opacity);
}

void Button::paintOverlay(Canvas& canvas) {
    const Bitmap& overlay = on ? *style_->overlayOn : *style_->overlayOff;
    const int opacity = faded(overlayRestAlpha);
    if (overlayStyle == OverlayStyle::Placed) {
        paintPlaced(canvas, overlay, opacity);
    } else if (backgroundStyle == BackgroundStyle::Centred) {
        paintCentred(canvas, overlay, localBounds(), opacity);
    } else {
        canvas.drawStretched(overlay, localBounds(), overlay.logicalRect(), 0.0f, opacity);
    }
}

void Button::paintTexts(Canvas& canvas) {
    float length = lineSpacing * static_cast<float>(texts_.size() - 1);
    for (const auto& text : texts_) length += text->width();
    float x = alignedOffset(textAlignment, localBounds().width(), length, textOffset);
    if (textAlignment == Alignment::Center) x += textOffset;
    const int opacity = textOverrideAlpha >= 0 ? textOverrideAlpha.value() : faded(textRestAlpha);
    for (const auto& text : texts_) {
        canvas.drawText(*text, {x, centredTop(*text, localBounds().height())}, opacity);
        x += text->width() + lineSpacing;
    }
}

}  // namespace vanta::gui
