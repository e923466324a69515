#include "gui/controls/switch.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "gui/controls/modifier_map.hpp"
#include "gui/controls/picture.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {
namespace {

constexpr int kManySteps = 100;

}  // namespace

Switch::Style::Style(UserInterface& interface) : Component(interface) {
    setImages({}, {}, {}, {});
}

void Switch::Style::setImages(const std::string& trackAtRest, const std::string& trackHovered,
                              const std::string& thumbAtRest, const std::string& thumbHovered) {
    track = loadPicture(ui(), trackAtRest);
    trackActive = loadPicture(ui(), trackHovered);
    thumbNormal = loadPicture(ui(), thumbAtRest);
    thumbActive = loadPicture(ui(), thumbHovered);
}

Switch::Switch(UserInterface& interface, Animator* animatedBy, Style* sharedStyle)
    : RolloverValueControl(interface, animatedBy),
      style_(sharedStyle ? sharedStyle : &interface.make<Style>()),
      mapper_(interface) {}

bool Switch::isDiscrete() const {
    return steps() < kManySteps;
}

float Switch::thumbLength() const {
    const Rect& size = style_->thumbNormal->logicalRect();
    return vertical_ ? size.height() : size.width();
}

float Switch::startOfTrack() const {
    return autoSize && trackStart <= 0.0f ? thumbLength() / 2.0f : trackStart.value();
}

float Switch::endOfTrack() const {
    return autoSize && trackEnd <= 0.0f ? thumbLength() / 2.0f : trackEnd.value();
}

float Switch::trackLength() const {
    const float all = vertical_ ? localBounds().height() : localBounds().width();
    return std::max(all - startOfTrack() - endOfTrack(), 1.0f);
}

float Switch::thumbPosition() const {
    const float share = static_cast<float>(value - minimum) / static_cast<float>(steps());
    return startOfTrack() + trackLength() * (vertical_ ? 1.0f - share : share);
}

Rect Switch::thumbBounds() const {
    const Rect& size = style_->thumbNormal->logicalRect();
    const float middle = thumbPosition();
    if (vertical_) {
        return Rect::ofSize((localBounds().width() - size.width()) / 2.0f, middle - size.height() / 2.0f,
                            size.width(), size.height());
    }
    return Rect::ofSize(middle - size.width() / 2.0f, (localBounds().height() - size.height()) / 2.0f,
                        size.width(), size.height());
}

int Switch::valueAtPoint(Point point) const {
    const auto range = static_cast<float>(steps());
    float share = (along(point) - startOfTrack()) / trackLength();
    if (vertical_) share = 1.0f - share;
    return clamped(minimum + static_cast<int>(std::floor(std::clamp(share, 0.0f, 1.0f) * range + 0.5f)));
}

void Switch::updateMapper() {
    mapper_.direction = vertical_ ? ValueDragMapper::Direction::Up : ValueDragMapper::Direction::Right;
    mapper_.steps = steps();
    mapper_.fineFactor = fineFactor.value();
    mapper_.dragLength = trackLength();
}

void Switch::resized() {
    vertical_ = localBounds().height() >= localBounds().width();
    updateMapper();
    RolloverValueControl::resized();
}

void Switch::propertyChanged(AbstractProperty& property) {
    RolloverValueControl::propertyChanged(property);
    updateMapper();
    if (&property == &autoSize || &property == &trackStart || &property == &trackEnd) markDirty();
}

void Switch::mouseDown(int button, Point point, int modifiers) {
    RolloverValueControl::mouseDown(button, point, modifiers);
    const bool isDoubleClick = (modifiers & modifier::kDoubleClick) && doubleClickable;
    if (button != kLeftPress || isDoubleClick || isChanging()) return;
    setModifiers(modifiers);
    beginEndChange(GesturePhase::Begin, 0);
    const bool wantsReset = ModifierMap::shared().behaviour(modifiers) & ModifierMap::kReset;
    const bool inThumb = thumbBounds().contains(point);
    if (wantsReset && !isDiscrete()) {
        jumpTo(defaultValue);
    } else if (inThumb || !isDiscrete()) {
        dragging_ = true;
        mapper_.startDrag(point);
    } else {
        pressedTrack_ = true;
    }
    thumbRollover_.setActive(dragging_ || inThumb);
}

void Switch::mouseMove(Point point, int modifiers) {
    RolloverValueControl::mouseMove(point, modifiers);
    if (dragging_) {
        setModifiers(modifiers);
        beginEndChange(GesturePhase::Change, mapper_.drag(*this, point, modifiers));
    } else {
        thumbRollover_.setActive(thumbBounds().contains(point));
    }
}

void Switch::mouseUp(int button, Point point, int modifiers) {
    if (button == kLeftPress && isChanging()) {
        if (std::exchange(pressedTrack_, false) && isInside(point)) jumpTo(valueAtPoint(point));
        dragging_ = false;
        beginEndChange(GesturePhase::End, 0);
        thumbRollover_.setActive(thumbBounds().contains(point));
    }
    RolloverValueControl::mouseUp(button, point, modifiers);
}

void Switch::mouseLeave() {
    thumbRollover_.setActive(dragging_);
    RolloverValueControl::mouseLeave();
}

bool Switch::wheel(WheelPhase phase, Point /*point*/, int modifiers, const WheelMove& move) {
    if (dragging_) return true;
    setModifiers(modifiers);
    wheelGesture(phase, mapper_.wheel(phase, modifiers, move.amount.y, move.pixels.y));
    return true;
}

void Switch::paint(Canvas& canvas) {
    paintTrack(canvas);
    paintThumb(canvas);
}

/// The groove is as wide as its picture and as long as the control.
void Switch::paintTrack(Canvas& canvas) {
    const RolloverManager::Look look = rollover().crossfade(*style_->track, *style_->trackActive);
    const Rect& size = look.picture.logicalRect();
    const Rect& all = localBounds();
    const Rect target =
        vertical_ ? Rect::ofSize((all.width() - size.width()) / 2.0f, 0.0f, size.width(), all.height())
                  : Rect::ofSize(0.0f, (all.height() - size.height()) / 2.0f, all.width(), size.height());
    canvas.drawStretched(look.picture, target, size, 0.0f, look.alpha);
}

void Switch::paintThumb(Canvas& canvas) {
    const RolloverManager::Look look = thumbRollover_.crossfade(*style_->thumbNormal, *style_->thumbActive);
    canvas.drawBitmap(look.picture, thumbBounds().origin(), look.alpha);
}

}  // namespace vanta::gui
