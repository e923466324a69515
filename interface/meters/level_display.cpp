#include "interface/meters/level_display.hpp"

namespace vanta::interface {

LevelDisplay::LevelDisplay(gui::UserInterface& interface, gui::Animator* animatedBy)
    : AnimatedControl(interface, animatedBy) {
    if (animatedBy) animatedBy->add(this, nullptr, nullptr);
}

LevelDisplay::~LevelDisplay() {
    if (animator()) animator()->forget(this);
    for (MappingObserver* observer : observers_) observer->displayGone();
}

float LevelDisplay::levelToPosition(float level) const {
    const float shown = curve.value().toDisplay(level);
    const bool isVertical = orientation == Orientation::Vertical;
    if (domain == LevelDomain::Decibel) return isVertical ? offset - scale * shown : scale * shown + offset;
    const float last = (isVertical ? localBounds().height() : localBounds().width()) - 1.0f;
    const float along = (shown - minimum) * last / (maximum - minimum);
    return isVertical ? last - along : along;
}

float LevelDisplay::positionToLevel(float position) const {
    const bool isVertical = orientation == Orientation::Vertical;
    float shown = 0.0f;
    if (domain == LevelDomain::Decibel) {
        shown = (isVertical ? offset - position : position - offset) / scale;
    } else {
        const float last = (isVertical ? localBounds().height() : localBounds().width()) - 1.0f;
        shown = (isVertical ? last - position : position) * (maximum - minimum) / last + minimum;
    }
    return curve.value().fromDisplay(shown);
}

void LevelDisplay::removeMappingObserver(const MappingObserver& observer) {
    std::erase(observers_, &observer);
}

void LevelDisplay::tellObservers() {
    for (MappingObserver* observer : observers_) observer->mappingChanged();
}

void LevelDisplay::resized() {
    AnimatedControl::resized();
    tellObservers();
}

void LevelDisplay::propertyChanged(AbstractProperty& property) {
    AnimatedControl::propertyChanged(property);
    const AbstractProperty* mapping[] = {&domain, &maximum, &minimum, &orientation, &scale, &offset, &curve};
    for (const AbstractProperty* changed : mapping) {
        if (changed != &property) continue;
        markDirty();
        tellObservers();
    }
}

}  // namespace vanta::interface
