#include "interface/meters/level_meter_label.hpp"

#include <algorithm>

#include "gui/graphics/bitmap.hpp"
#include "gui/tree/user_interface.hpp"
#include "interface/meters/level_reading.hpp"

namespace vanta::interface {

LevelMeterLabel::LevelMeterLabel(gui::UserInterface& interface, gui::Animator* animatedBy)
    : Label(interface), animator_(animatedBy), timer_(interface.createClock()) {
    alignment = gui::Alignment::Center;
    if (animator_) {
        animator_->add(this, nullptr, nullptr);
        link(*this, *animator_);
    }
    refresh();
}

LevelMeterLabel::~LevelMeterLabel() {
    if (animator_) animator_->forget(this);
}

void LevelMeterLabel::linkRemoved(Component* other) {
    if (other == static_cast<Component*>(animator_)) animator_ = nullptr;
    Label::linkRemoved(other);
}

void LevelMeterLabel::setSource(wave::LevelSource* source) {
    if (source == source_) return;
    source_ = source;
    refresh();
}

void LevelMeterLabel::propertyChanged(AbstractProperty& property) {
    Label::propertyChanged(property);
    const AbstractProperty* own[] = {&clipColor,      &clipLevel,   &fadeRange,   &warningColor,
                                     &info,           &levelShift,  &normalColor, &precision,
                                     &interpretation, &targetLevel, &targetColor, &precisionMode};
    if (std::ranges::find(own, &property) != std::end(own)) refresh();
}

LevelText LevelMeterLabel::read() {
    if (!source_) return {{}, kSilence, false};
    float level = source_->value(info);
    // Before a processor has run nothing is reduced.
    if (interpretation == LevelInterpretation::Reduction && isSilence(level)) level = 0.0f;
    return formatLevel(isSilence(level) ? level : level + levelShift,
                       {precision, precisionMode, interpretation, clipLevel});
}

gui::Color LevelMeterLabel::colorOf(const LevelText& number) const {
    if (fadeRange > 0.0f) return gradient_.at(1.0f + (number.rounded - clipLevel) / fadeRange);
    if (number.isOver) return clipColor;
    if (targetLevel != 0.0f && number.rounded > targetLevel) return targetColor;
    return normalColor;
}

void LevelMeterLabel::show(const LevelText& number, gui::Color color) {
    timer_->reset();
    textColor = color;
    if (number.text == shown_) return;
    shown_ = number.text;
    setText(shown_);
}

void LevelMeterLabel::animate() {
    if (!isShown()) return;
    const LevelText number = read();
    const gui::Color color = colorOf(number);
    if (color != textColor.value() || timer_->elapsed() > kPaceMs) show(number, color);
}

void LevelMeterLabel::refresh() {
    gradient_ = gui::Gradient(normalColor, warningColor, 0.5f, clipColor);
    const LevelText number = read();
    show(number, colorOf(number));
}

LevelPeakLabel::LevelPeakLabel(gui::UserInterface& interface, gui::Animator* animatedBy)
    : LevelMeterLabel(interface, animatedBy) {
    info = wave::LevelSource::Extreme;
    // Two quick clicks are two clicks.
    doubleClickable = false;
}

void LevelPeakLabel::setBackground(const gui::Bitmap* picture) {
    background_ = picture;
    markDirty();
}

void LevelPeakLabel::click() {
    if (source()) source()->resetPeak();
    LevelMeterLabel::click();
}

void LevelPeakLabel::paint(gui::Canvas& canvas) {
    if (background_) canvas.drawStretched(*background_, localBounds(), background_->logicalRect());
    LevelMeterLabel::paint(canvas);
}

}  // namespace vanta::interface
