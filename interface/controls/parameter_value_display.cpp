#include "interface/controls/parameter_value_display.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "gui/controls/picture.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"
#include "interface/controls/styles.hpp"

namespace vanta::interface {
namespace {

/// Of the picture, which is the panel's shadow.
constexpr float kInset = 10.0f;
constexpr float kSideMargin = 7.0f;
constexpr float kLineMargin = 3.0f;
constexpr float kLeastWidth = 48.0f;
constexpr float kLineHeight = 15.0f;
constexpr float kEditorHeight = 20.0f;
constexpr float kEditorWidth = 64.0f;
/// From the picture to the control: a caption of the control's stays in view.
constexpr float kGap = 8.0f;

}  // namespace

ParameterValueDisplay::ParameterValueDisplay(gui::UserInterface& interface, gui::Animator* animatedBy)
    : AnimatedControl(interface, animatedBy),
      background_(gui::loadPicture(interface, "ParameterValueDisplayBackground.png")),
      timer_(interface.createTimer()) {
    timer_->onTick.setHandler(this, &ParameterValueDisplay::elapsed);
    visible = false;
    hitThreshold = 0;
    parent = &interface.rootControl();
}

ParameterValueDisplay::~ParameterValueDisplay() {
    for (gui::ValueControl* control : attached_) detach(*control);
}

void ParameterValueDisplay::attach(gui::ValueControl& control) {
    if (std::find(attached_.begin(), attached_.end(), &control) != attached_.end()) return;
    link(*this, control);
    attached_.push_back(&control);
    control.onMouseEnter.addHandler(this, &ParameterValueDisplay::entered);
    control.onMouseLeave.addHandler(this, &ParameterValueDisplay::left);
    control.onBeginChange.addHandler(this, &ParameterValueDisplay::taken);
    control.onEndChange.addHandler(this, &ParameterValueDisplay::released);
    control.onValueChanged.addHandler(this, &ParameterValueDisplay::changed);
    control.onTyping.addHandler(this, &ParameterValueDisplay::typed);
}

void ParameterValueDisplay::detach(gui::ValueControl& control) {
    control.onMouseEnter.removeHandler(this, &ParameterValueDisplay::entered);
    control.onMouseLeave.removeHandler(this, &ParameterValueDisplay::left);
    control.onBeginChange.removeHandler(this, &ParameterValueDisplay::taken);
    control.onEndChange.removeHandler(this, &ParameterValueDisplay::released);
    control.onValueChanged.removeHandler(this, &ParameterValueDisplay::changed);
    control.onTyping.removeHandler(this, &ParameterValueDisplay::typed);
}

void ParameterValueDisplay::linkRemoved(Component* other) {
    const auto isGone = [&](const gui::ValueControl* control) {
        return static_cast<const Component*>(control) == other;
    };
    std::erase_if(attached_, isGone);
    if (isGone(hovered_)) hovered_ = nullptr;
    if (isGone(typedInto_)) {
        typedInto_ = nullptr;
        if (editor_ && !ui().isDestroying()) editor_->cancel();
    }
    const bool shownIsGone = std::erase_if(rows_, [&](const Row& row) { return isGone(row.control); }) > 0;
    if (shownIsGone && !ui().isDestroying()) hide();
    AnimatedControl::linkRemoved(other);
}

ParameterValueDisplay::Row ParameterValueDisplay::makeRow(gui::ValueControl& control) const {
    Row row{&control, ui().createText(), ui().createText()};
    row.name->fontSize = 7.5f;
    row.name->color = kButtonTextColor;
    row.name->text = control.accessibleName.value();
    row.value->fontSize = 8.25f;
    row.value->fontName = std::string("Inter Medium");
    row.value->color = kValueColor;
    row.value->text = control.valueText();
    return row;
}

void ParameterValueDisplay::show(gui::ValueControl& control) {
    timer_->running = false;
    if (target() != &control) {
        rows_.clear();
        rows_.push_back(makeRow(control));
    }
    refresh();
    toFront();
    if (showing_) return;
    showing_ = true;
    if (animator()) alpha = 0;
    visible = true;
    fadeTo(255, 100);
    if (listener) listener->displayChanged();
}

void ParameterValueDisplay::showWith(gui::ValueControl& control) {
    const auto isShown = [&](const Row& row) { return row.control == &control; };
    if (rows_.empty() || std::any_of(rows_.begin(), rows_.end(), isShown)) return;
    rows_.push_back(makeRow(control));
    refresh();
}

void ParameterValueDisplay::hide() {
    timer_->running = false;
    if (!std::exchange(showing_, false)) return;
    visible = false;
    rows_.clear();
    hasPointer_ = false;
    setPinned(false);
    if (listener) listener->displayChanged();
}

void ParameterValueDisplay::setPinned(bool pinned) {
    if (std::exchange(pinned_, pinned) == pinned) return;
    if (!pinned && showing_ && !isHeld()) startTimer(kHideMs);
    if (listener) listener->fixedChanged();
}

/// While something needs it, it stays.
bool ParameterValueDisplay::isHeld() const {
    return pinned_ || hasPointer_ || typedInto_ ||
           (target() && (target()->isChanging() || hovered_ == target()));
}

void ParameterValueDisplay::refresh() {
    if (rows_.empty()) return;
    for (const Row& row : rows_) row.value->text = row.control->valueText();
    place();
    markDirty();
}

/// Above the control, or below where there is no room; always within the window.
void ParameterValueDisplay::place() {
    float width = kLeastWidth;
    for (const Row& row : rows_) width = std::max({width, row.name->width(), row.value->width()});
    width += 2.0f * (kSideMargin + kInset);
    const float lines = 2.0f * static_cast<float>(rows_.size());
    const float height = lines * kLineHeight + 2.0f * (kLineMargin + kInset);
    const gui::Rect at = target()->windowBounds();
    const gui::Rect& room = ui().rootControl().localBounds();
    const float x = std::round((at.left + at.right - width) / 2.0f);
    float y = std::round(at.top - kGap - height);
    if (y < 0.0f) y = std::round(at.bottom + kGap);
    const gui::Rect placed =
        gui::Rect::ofSize(std::clamp(x, 0.0f, std::max(room.right - width, 0.0f)),
                          std::clamp(y, 0.0f, std::max(room.bottom - height, 0.0f)), width, height);
    if (gui::isSame(placed, bounds.value())) return;
    bounds = placed;
    if (listener) listener->positionChanged();
}

gui::Rect ParameterValueDisplay::panel() const {
    const gui::Rect& all = localBounds();
    return {kInset, kInset, all.right - kInset, all.bottom - kInset};
}

std::string ParameterValueDisplay::nameLine(int row) const {
    return rows_[static_cast<std::size_t>(row)].name->text;
}

std::string ParameterValueDisplay::valueLine(int row) const {
    return rows_[static_cast<std::size_t>(row)].value->text;
}

gui::Rect ParameterValueDisplay::valueBounds(int row) const {
    const gui::Rect inside = panel();
    const float line = static_cast<float>(2 * row + 1);
    return gui::Rect::ofSize(inside.left, inside.top + kLineMargin + line * kLineHeight, inside.width(),
                             kLineHeight);
}

int ParameterValueDisplay::alphaAt(gui::Point point) {
    return panel().contains(point) ? 255 : 0;
}

void ParameterValueDisplay::paint(gui::Canvas& canvas) {
    canvas.drawStretched(*background_, localBounds(), background_->logicalRect());
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        const gui::Rect value = valueBounds(static_cast<int>(i));
        float top = value.top - kLineHeight;
        for (gui::Text* text : {rows_[i].name.get(), rows_[i].value.get()}) {
            const float x = value.left + (value.width() - text->width()) / 2.0f;
            canvas.drawText(*text, {x, top + gui::centredTop(*text, kLineHeight)});
            top += kLineHeight;
        }
    }
}

// What happens to the controls.

void ParameterValueDisplay::startTimer(int milliseconds) {
    timer_->running = false;
    timer_->interval = milliseconds;
    timer_->running = true;
}

void ParameterValueDisplay::elapsed(void*) {
    timer_->running = false;
    if (showing_ && isHeld()) return;
    if (hovered_ && target() != hovered_) {
        show(*hovered_);
    } else {
        hide();
    }
}

void ParameterValueDisplay::entered(void* sender) {
    hovered_ = static_cast<gui::ValueControl*>(sender);
    if (typedInto_ || pinned_ || (target() && target()->isChanging())) return;
    // Once it is there it follows at once.
    if (showing_) {
        show(*hovered_);
    } else {
        startTimer(kShowMs);
    }
}

void ParameterValueDisplay::left(void* sender) {
    if (hovered_ == sender) hovered_ = nullptr;
    if (!showing_) {
        timer_->running = false;
    } else if (!isHeld()) {
        startTimer(kHideMs);
    }
}

void ParameterValueDisplay::taken(void* sender) {
    auto& control = *static_cast<gui::ValueControl*>(sender);
    if (!target() || !target()->isChanging() || target() == &control) show(control);
}

void ParameterValueDisplay::released(void* sender) {
    if (sender == target() && !isHeld()) startTimer(kHideMs);
}

void ParameterValueDisplay::changed(void*) {
    if (showing_) refresh();
}

void ParameterValueDisplay::mouseEnter() {
    hasPointer_ = true;
    AnimatedControl::mouseEnter();
}

void ParameterValueDisplay::mouseLeave() {
    hasPointer_ = false;
    if (showing_ && !isHeld()) startTimer(kHideMs);
    AnimatedControl::mouseLeave();
}

// Typing.

void ParameterValueDisplay::typed(void* sender) {
    beginTyping(*static_cast<gui::ValueControl*>(sender));
}

void ParameterValueDisplay::doubleClick() {
    AnimatedControl::doubleClick();
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        if (lastMouse().y < valueBounds(static_cast<int>(i)).bottom || i + 1 == rows_.size()) {
            beginTyping(*rows_[i].control);
            return;
        }
    }
}

void ParameterValueDisplay::beginTyping(gui::ValueControl& control) {
    if (!editor_) {
        editor_ = ui().createTextEditor();
        editor_->alignment = gui::Alignment::Center;
        editor_->selectAll = true;
        editor_->onCommit.setHandler(this, &ParameterValueDisplay::commit);
        editor_->onCancel.setHandler(this, &ParameterValueDisplay::typingOver);
    }
    if (editor_->isActive()) return;
    const auto isShown = [&](const Row& row) { return row.control == &control; };
    const auto found = std::find_if(rows_.begin(), rows_.end(), isShown);
    const int row = found == rows_.end() ? 0 : static_cast<int>(found - rows_.begin());
    if (found == rows_.end()) show(control);
    typedInto_ = &control;
    timer_->running = false;
    const gui::Rect line = toWindow(valueBounds(row));
    const float width = std::max(kEditorWidth, line.width());
    editor_->bounds =
        gui::Rect::ofSize((line.left + line.right - width) / 2.0f,
                          (line.top + line.bottom - kEditorHeight) / 2.0f, width, kEditorHeight);
    editor_->text().text = control.valueText();
    editor_->begin();
}

/// What means no value is not taken over.
void ParameterValueDisplay::commit(void*) {
    if (gui::ValueControl* control = std::exchange(typedInto_, nullptr)) {
        const bool taken = control->commitText(editor_->text().text.value());
        if (taken && listener) listener->valueEdited(*control);
    }
    typingOver(nullptr);
}

void ParameterValueDisplay::typingOver(void*) {
    typedInto_ = nullptr;
    refresh();
    if (showing_ && !isHeld()) startTimer(kHideMs);
}

}  // namespace vanta::interface
