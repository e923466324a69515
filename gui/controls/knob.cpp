#include "gui/controls/knob.hpp"

#include <cmath>
#include <cstdlib>

#include "gui/controls/modifier_map.hpp"
#include "gui/controls/picture.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {
namespace {

constexpr int kManySteps = 100;

}  // namespace

Knob::Knob(UserInterface& interface, Animator* animatedBy, Style* style)
    : RolloverValueControl(interface, animatedBy),
      style_(style ? style : &interface.make<Style>()),
      mapper_(interface) {}

void Knob::propertyChanged(AbstractProperty& property) {
    RolloverValueControl::propertyChanged(property);
    mapper_.steps = steps();
    mapper_.fineFactor = fineFactor.value();
    if (&property == &sweep || &property == &startOffset || &property == &showDefault) markDirty();
}

Point Knob::fromCentre(Point point) const {
    return point - Point{localBounds().width() / 2.0f, localBounds().height() / 2.0f};
}

float Knob::outerRadius() const {
    return style_->outerRadius > 0.0f ? style_->outerRadius.value() : localBounds().width() / 2.0f - 2.0f;
}

bool Knob::isInRing(Point fromCentre) const {
    const float radial = fromCentre.x * fromCentre.x + fromCentre.y * fromCentre.y;
    const float inner = style_->innerRadius;
    return radial >= inner * inner && radial <= outerRadius() * outerRadius();
}

Knob::Hover Knob::hoverAt(Point point) const {
    const Point radius = fromCentre(point);
    const float away = KnobGeometry::distance(KnobGeometry::angleOfPoint(radius), angle());
    const bool overGrip = rotaryDrag && away <= style_->ringWidth / 360.0f && isInRing(radius);
    return overGrip ? Hover::OverRing : Hover::OverKnob;
}

void Knob::setHover(Hover hover) {
    if (hover == hoverState_) return;
    hoverState_ = hover;
    markDirty();
}

Rect Knob::hotBounds() {
    const float inset = style_->hotInset;
    const Rect& all = localBounds();
    return {all.left + inset, all.top + inset, all.right - inset, all.bottom - inset};
}

int Knob::alphaAt(Point point) {
    if (style_->hasOverlay()) return opacityAt(*style_->backNormal, point);
    const Point radius = fromCentre(point);
    const bool hit =
        isInRing(radius) && geometry().isInSweep(KnobGeometry::angleOfPoint(radius), style_->ringWidth);
    return hit ? 255 : 0;
}

void Knob::mouseDown(int button, Point point, int modifiers) {
    RolloverValueControl::mouseDown(button, point, modifiers);
    const bool isDoubleClick = (modifiers & modifier::kDoubleClick) && doubleClickable;
    if (button != kLeftPress || isDoubleClick || isChanging()) return;
    setHover(hoverAt(point));
    setModifiers(modifiers);
    beginEndChange(GesturePhase::Begin, 0);
    beginDrag(point, modifiers);
}

void Knob::beginDrag(Point point, int modifiers) {
    wasReset_ = ModifierMap::shared().behaviour(modifiers) & ModifierMap::kReset;
    if (wasReset_) {
        jumpTo(defaultValue);
    } else if (hoverState_ == Hover::OverRing) {
        dragMode_ = Drag::Rotary;
        gripOffset_ = KnobGeometry::angleOfPoint(fromCentre(point)) - angle();
    } else if (style_->hasOverlay()) {
        dragMode_ = Drag::Linear;
        mapper_.startDrag(point);
    }
    markDirty();
}

void Knob::mouseMove(Point point, int modifiers) {
    RolloverValueControl::mouseMove(point, modifiers);
    if (dragMode_ != Drag::None) setModifiers(modifiers);
    switch (dragMode_) {
        case Drag::Linear:
            beginEndChange(GesturePhase::Change, mapper_.drag(*this, point, modifiers));
            break;
        case Drag::Rotary:
            turnTo(point);
            break;
        case Drag::None:
            setHover(hoverAt(point));
            break;
    }
}

void Knob::turnTo(Point point) {
    const int target = geometry().valueAt(KnobGeometry::angleOfPoint(fromCentre(point)) - gripOffset_);
    const float leap = static_cast<float>(std::abs(target - value)) / static_cast<float>(steps());
    if (jumpGuard && leap > 0.5f) return;
    beginEndChange(GesturePhase::Change, target - virtualValue());
}

void Knob::mouseUp(int button, Point point, int modifiers) {
    if (button == kLeftPress && isChanging()) {
        const bool isRingClick = dragMode_ == Drag::None && !wasReset_ && !style_->hasOverlay();
        if (isRingClick && localBounds().contains(point) && alphaAt(point) > 0) {
            jumpTo(geometry().valueAt(KnobGeometry::angleOfPoint(fromCentre(point))));
        }
        beginEndChange(GesturePhase::End, 0);
        dragMode_ = Drag::None;
        markDirty();
    }
    RolloverValueControl::mouseUp(button, point, modifiers);
}

void Knob::mouseLeave() {
    setHover(Hover::Outside);
    RolloverValueControl::mouseLeave();
}

bool Knob::wheel(WheelPhase phase, Point /*point*/, int modifiers, const WheelMove& move) {
    // During a drag the pointer has the value.
    if (dragMode_ != Drag::None) return true;
    if (steps() >= kManySteps) setModifiers(modifiers);
    float sign = 1.0f;
    // A short row of values that begins right of the top runs downwards for the eye.
    if (steps() < kManySteps && startOffset - sweep / 2.0f > 0.0f) sign = -1.0f;
    const int delta = mapper_.wheel(phase, modifiers, sign * move.amount.y, sign * move.pixels.y);
    wheelGesture(phase, delta);
    return true;
}

}  // namespace vanta::gui
