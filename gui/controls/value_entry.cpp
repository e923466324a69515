#include "gui/controls/value_entry.hpp"

#include <algorithm>
#include <utility>

#include "gui/controls/text_editor.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {
namespace {

constexpr float kBoxWidth = 72.0f;
constexpr float kBoxHeight = 20.0f;

}  // namespace

ValueEntry::ValueEntry(UserInterface& interface) : Component(interface) {}

ValueEntry::~ValueEntry() {
    for (ValueControl* control : attached_) control->onTyping.removeHandler(this, &ValueEntry::begin);
}

void ValueEntry::attach(ValueControl& control) {
    link(*this, control);
    control.onTyping.addHandler(this, &ValueEntry::begin);
    attached_.push_back(&control);
}

/// Over the middle of the control, within the window.
Rect ValueEntry::boxOver(const ValueControl& control) const {
    const Rect at = control.windowBounds();
    const Rect& room = ui().rootControl().localBounds();
    const float x = (at.left + at.right - kBoxWidth) / 2.0f, y = (at.top + at.bottom - kBoxHeight) / 2.0f;
    return Rect::ofSize(std::max(std::min(x, room.right - kBoxWidth), 0.0f),
                        std::max(std::min(y, room.bottom - kBoxHeight), 0.0f), kBoxWidth, kBoxHeight);
}

void ValueEntry::begin(void* sender) {
    if (!editor_) {
        editor_ = ui().createTextEditor();
        editor_->alignment = Alignment::Center;
        editor_->selectAll = true;
        editor_->onCommit.setHandler(this, &ValueEntry::commit);
    }
    if (editor_->isActive()) return;
    typed_ = static_cast<ValueControl*>(sender);
    editor_->bounds = boxOver(*typed_);
    editor_->text().text = typed_->valueText();
    editor_->begin();
}

void ValueEntry::commit(void*) {
    if (ValueControl* control = std::exchange(typed_, nullptr))
        control->commitText(editor_->text().text.value());
}

void ValueEntry::linkRemoved(Component* other) {
    std::erase_if(attached_,
                  [&](ValueControl* control) { return static_cast<Component*>(control) == other; });
    if (!typed_ || other != static_cast<Component*>(typed_)) return;
    typed_ = nullptr;
    if (!ui().isDestroying()) editor_->cancel();
}

}  // namespace vanta::gui
