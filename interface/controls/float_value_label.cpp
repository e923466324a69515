#include "interface/controls/float_value_label.hpp"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "gui/tree/user_interface.hpp"
#include "interface/controls/styles.hpp"
#include "plugin/parameters/abstract_plugin_parameter.hpp"

namespace vanta::interface {
namespace {

/// Units that a press may tremble by.
constexpr float kDragThreshold = 2.0f;
/// A longer press is no click.
constexpr int kClickMs = 250;
constexpr int kArmedMs = 5000;
constexpr float kPixelsPerClick = 25.0f;

}  // namespace

FloatValueLabel::FloatValueLabel(gui::UserInterface& interface, ParameterGestures& usedGestures,
                                 const AbstractPluginParameter& shownParameter)
    : MultiLabel(interface, 1),
      gestures_(usedGestures),
      parameter_(shownParameter),
      pressClock_(interface.createClock()),
      armedTimer_(interface.createTimer()) {
    alignment = gui::Alignment::Center;
    textColor = kValueColor;
    armedTimer_->interval = kArmedMs;
    armedTimer_->onTick.setHandler(this, &FloatValueLabel::armedOver);
    hint = parameter_.helpText;
    accessibleName = parameter_.displayName;
    refresh();
}

FloatValueLabel::~FloatValueLabel() {
    letGo();
}

std::string FloatValueLabel::shownText() const {
    const double number = static_cast<double>(parameter_.toDisplay(parameter_.value()));
    const std::string text = fmt::format("{:.{}f}", number, std::max(precision.value(), 0));
    // What rounds to nothing has no sign.
    const bool isZero = text.find_first_not_of("-0.") == std::string::npos;
    const std::string plain = isZero && text.front() == '-' ? text.substr(1) : text;
    return showPlus && plain.front() != '-' ? "+" + plain : plain;
}

void FloatValueLabel::refresh() {
    setText(0, shownText());
}

void FloatValueLabel::propertyChanged(AbstractProperty& property) {
    MultiLabel::propertyChanged(property);
    if (&property == &precision || &property == &showPlus) refresh();
}

void FloatValueLabel::hold() {
    if (dragging_) return;
    dragging_ = true;
    gestures_.begin(parameter_.index());
}

void FloatValueLabel::letGo() {
    if (!std::exchange(dragging_, false)) return;
    gestures_.end(parameter_.index());
}

void FloatValueLabel::moveBy(float position) {
    const float from = parameter_.normalize(parameter_.value());
    const float to = std::clamp(from + position, 0.0f, 1.0f);
    gestures_.change(parameter_.index(), parameter_.denormalize(to));
    refresh();
}

void FloatValueLabel::stepBy(float count) {
    const float shown = parameter_.toDisplay(parameter_.value()) + count * step;
    const float value = parameter_.fromDisplay(shown);
    if (std::isnan(value)) return;
    gestures_.change(parameter_.index(), std::clamp(value, parameter_.minimum(), parameter_.maximum()));
    refresh();
}

void FloatValueLabel::mouseDown(int button, gui::Point point, int modifiers) {
    MultiLabel::mouseDown(button, point, modifiers);
    if (button != gui::kLeftPress || (modifiers & gui::modifier::kDoubleClick)) return;
    typesOnRelease_ = std::exchange(armed_, false);
    armedTimer_->running = false;
    pressClock_->reset();
    pressY_ = point.y;
    hold();
}

void FloatValueLabel::mouseMove(gui::Point point, int modifiers) {
    MultiLabel::mouseMove(point, modifiers);
    const float way = pressY_ - point.y;
    if (!dragging_ || std::abs(way) <= kDragThreshold) return;
    typesOnRelease_ = false;
    moveBy(way / 2.0f * dragScale);
    pressY_ = point.y;
}

void FloatValueLabel::mouseUp(int button, gui::Point point, int modifiers) {
    const bool wasHeld = dragging_ && button == gui::kLeftPress;
    letGo();
    MultiLabel::mouseUp(button, point, modifiers);
    if (!wasHeld || pressClock_->elapsed() > kClickMs || !isInside(point)) return;
    if (std::exchange(typesOnRelease_, false)) {
        beginTyping();
    } else {
        armed_ = true;
        armedTimer_->running = true;
    }
}

void FloatValueLabel::armedOver(void*) {
    armed_ = false;
    armedTimer_->running = false;
}

void FloatValueLabel::doubleClick() {
    MultiLabel::doubleClick();
    beginTyping();
}

bool FloatValueLabel::wheel(WheelPhase phase, gui::Point, int, const WheelMove& move) {
    if (phase == WheelPhase::Begin) hold();
    if (phase == WheelPhase::Move && dragging_) stepBy(move.pixels.y / kPixelsPerClick);
    if (phase == WheelPhase::End) letGo();
    return true;
}

bool FloatValueLabel::keyDown(const gui::KeyPress& key) {
    const bool isStep = key.key == gui::Key::Up || key.key == gui::Key::Down;
    if (key.modifiers & (gui::modifier::kCtrl | gui::modifier::kAlt | gui::modifier::kMeta)) return false;
    if (key.key == gui::Key::Return) {
        beginTyping();
    } else if (isStep) {
        hold();
        stepBy(key.key == gui::Key::Up ? 1.0f : -1.0f);
        letGo();
    }
    return isStep || key.key == gui::Key::Return;
}

void FloatValueLabel::beginTyping() {
    armedOver(nullptr);
    if (!editor_) {
        editor_ = ui().createTextEditor();
        editor_->alignment = gui::Alignment::Center;
        editor_->selectAll = true;
        editor_->onCommit.setHandler(this, &FloatValueLabel::commit);
    }
    editor_->bounds = windowBounds();
    editor_->text().text = shownText();
    editor_->begin();
}

/// What is not understood leaves the value as it is.
void FloatValueLabel::commit(void*) {
    float typed = 0.0f;
    if (parameter_.parseText(editor_->text().text, &typed)) gestures_.set(parameter_.index(), typed);
    refresh();
}

}  // namespace vanta::interface
