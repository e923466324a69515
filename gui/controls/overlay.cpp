#include "gui/controls/overlay.hpp"

#include <algorithm>
#include <cmath>

#include "gui/animation/fade_animation.hpp"
#include "gui/tree/region.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {
namespace {

constexpr int kShowMs = 150;

/// What of the control its ancestors let through, in the window.
Rect shownPart(const Control& control) {
    if (!control.isShown()) return {};
    Rect part = control.windowBounds();
    for (const Control* above = control.parent; above; above = above->parent) {
        part = commonPart(part, above->windowBounds());
    }
    return part;
}

bool isWithin(const Rect& inner, const Rect& outer) {
    return inner.left >= outer.left && inner.top >= outer.top && inner.right <= outer.right &&
           inner.bottom <= outer.bottom;
}

}  // namespace

void Overlay::addTarget(Control& control, Behaviour behaviour) {
    link(*this, control);
    order_.push_back(static_cast<int>(targets_.size()));
    targets_.push_back({&control, behaviour});
}

void Overlay::linkRemoved(Component* other) {
    // The place stays, so that indices do.
    for (Target& target : targets_) {
        if (static_cast<Component*>(target.control) == other) target.control = nullptr;
    }
    AnimatedControl::linkRemoved(other);
}

void Overlay::propertyChanged(AbstractProperty& property) {
    if (&property == &sheetColor) {
        markDirty();
    } else {
        AnimatedControl::propertyChanged(property);
    }
}

bool Overlay::isHit(const Target& target, Point windowPoint) const {
    if (!target.control || shownPart(*target.control).isEmpty()) return false;
    Control& control = *target.control;
    const Point point = windowPoint - control.toWindow(Point{});
    if (!control.localBounds().contains(point) || !control.hotBounds().contains(point)) return false;
    return target.behaviour == Behaviour::HitAnywhere || control.isInside(point);
}

int Overlay::targetAt(Point windowPoint) const {
    for (auto index = order_.rbegin(); index != order_.rend(); ++index) {
        const Target& target = targets_[static_cast<std::size_t>(*index)];
        if (isHit(target, windowPoint)) return target.behaviour == Behaviour::Refused ? -1 : *index;
    }
    return -1;
}

Point Overlay::targetCenter(int index) const {
    Control* control = targets_[static_cast<std::size_t>(index)].control;
    if (!control) return {};
    const Rect hot = control->toWindow(control->hotBounds());
    Point center{(hot.left + hot.right) / 2.0f, (hot.top + hot.bottom) / 2.0f};
    const auto next = static_cast<std::size_t>(index) + 1;
    const Control* sibling = next < targets_.size() ? targets_[next].control : nullptr;
    if (sibling && sibling->isShown() && sibling->parent.value() == control->parent.value() &&
        isWithin(sibling->placedBounds(), control->placedBounds())) {
        center.y -= (control->localBounds().height() + sibling->localBounds().height()) / 4.0f - 1.0f;
    }
    return center;
}

void Overlay::show() {
    Control& root = ui().rootControl();
    anchor = anchor::kAll;
    bounds = root.localBounds();
    if (!animator()) {
        parent = &root;
        return;
    }
    alpha = 1;
    parent = &root;
    fadeTo(255, kShowMs);
}

void Overlay::hide() {
    if (animator() && alpha != 0) {
        auto* fade = new FadeAnimation(*this, 0);
        fade->onFinished.setHandler(this, &Overlay::fadedOut);
    } else {
        alpha = 0;
        fadedOut(nullptr);
    }
}

void Overlay::fadedOut(void* /*sender*/) {
    ui().postDeferred(*this, 0);
}

void Overlay::deferredCall(int /*argument*/) {
    delete this;
}

}  // namespace vanta::gui
