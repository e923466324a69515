#include "interface/controls/parameter_value_display.hpp"

#include <algorithm>
#include <utility>

#include "gui/controls/picture.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"
#include "interface/controls/styles.hpp"

namespace vanta::interface {
namespace {

constexpr int kFadeMs = 100;
constexpr float kEditorHeight = 20.0f;
constexpr float kEditorWidth = 64.0f;

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
    // Before typing ends, after which each row asks its control.
    const bool shownIsGone = std::erase_if(rows_, [&](const Row& row) { return isGone(row.control); }) > 0;
    if (isGone(typedInto_)) {
        typedInto_ = nullptr;
        if (editor_ && !ui().isDestroying()) editor_->cancel();
    }
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
    const bool isOther = target() != &control;
    if (isOther) {
        rows_.clear();
        rows_.push_back(makeRow(control));
    }
    refresh();
    toFront();
    const bool hasCome = !std::exchange(showing_, true);
    if (hasCome) {
        if (animator()) alpha = 0;
        visible = true;
        fadeTo(255, kFadeMs);
    }
    if ((hasCome || isOther) && listener) listener->displayChanged();
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

std::string ParameterValueDisplay::nameLine(int row) const {
    return rows_[static_cast<std::size_t>(row)].name->text;
}

std::string ParameterValueDisplay::valueLine(int row) const {
    return rows_[static_cast<std::size_t>(row)].value->text;
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
