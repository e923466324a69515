#include "gui/controls/text_editor.hpp"

#include <utility>

#include "gui/controls/edit_field.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {

/// Takes all presses beside the box, and keeps Tab from leaving it.
class TextEditor::Blocker : public Control {
public:
    using Control::Control;
    bool holdsFocus() const override { return true; }
    void deferredCall(int) override { delete this; }
};

TextEditor::TextEditor(UserInterface& interface) : Component(interface), text_(interface.createText()) {
    text_->color = Color::of(0xFFF0E9E6);
    text_->fontSize = 8.25f;
}

TextEditor::~TextEditor() {
    end();
}

void TextEditor::begin() {
    if (isActive()) return;
    RootControl& root = ui().rootControl();
    formerFocus_ = root.focusedControl();
    if (formerFocus_) link(*this, *formerFocus_);
    if (modal) {
        blocker_ = &ui().make<Blocker>();
        link(*this, *blocker_);
        blocker_->bounds = root.localBounds();
        blocker_->anchor = anchor::kAll;
        blocker_->onClick.setHandler(this, &TextEditor::clickedBeside);
        blocker_->parent = &root;
    }
    field_ = &ui().make<EditField>();
    link(*this, *field_);
    field_->alignment = alignment;
    field_->style().copyStyleFrom(*text_);
    field_->line().setText(text_->text);
    if (selectAll) field_->line().selectAll();
    field_->onReturn.setHandler(this, &TextEditor::returnHit);
    field_->onEscape.setHandler(this, &TextEditor::escapeHit);
    field_->onTab.setHandler(this, &TextEditor::tabHit);
    field_->bounds = bounds.value();
    field_->parent = blocker_ ? blocker_ : static_cast<Control*>(&root);
    field_->takeFocus();
}

void TextEditor::commit() {
    if (!isActive()) return;
    text_->text = field_->line().text();
    end();
    onCommit.raise(this);
}

void TextEditor::cancel() {
    if (!isActive()) return;
    end();
    onCancel.raise(this);
}

void TextEditor::end() {
    Control* const former = std::exchange(formerFocus_, nullptr);
    if (former) unlink(*this, *former);
    retire(std::exchange(field_, nullptr));
    retire(std::exchange(blocker_, nullptr));
    if (former && !ui().isDestroying() && former->isReachable()) former->takeFocus();
}

/// Out of the tree at once, but it may be the one that has called: it deletes itself later.
void TextEditor::retire(Control* control) {
    if (!control) return;
    unlink(*this, *control);
    if (ui().isDestroying()) return;
    control->parent = nullptr;
    ui().postDeferred(*control, 0);
}

void TextEditor::tabHit(void*) {
    if (tabAction != TabAction::Commit) return;
    text_->text = field_->line().text();
    end();
    onTab.raise(this);
}

/// The blocker is still on the stack.
void TextEditor::clickedBeside(void*) {
    ui().postDeferred(*this, 0);
}

void TextEditor::deferredCall(int /*argument*/) {
    commit();
}

void TextEditor::propertyChanged(AbstractProperty& /*property*/) {
    if (field_) field_->bounds = bounds.value();
}

void TextEditor::linkRemoved(Component* other) {
    if (other == static_cast<Component*>(formerFocus_)) formerFocus_ = nullptr;
    if (other == static_cast<Component*>(field_)) field_ = nullptr;
    if (other == static_cast<Component*>(blocker_)) blocker_ = nullptr;
}

}  // namespace vanta::gui
