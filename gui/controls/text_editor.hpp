#pragma once

#include <memory>
#include <string>

#include "gui/controls/alignment.hpp"
#include "gui/graphics/text.hpp"
#include "gui/tree/component.hpp"
#include "gui/tree/control.hpp"

namespace vanta::gui {

class EditField;

/// Lets the user type a text in a box over the interface. On the interface's thread.
class TextEditor : public Component {
public:
    enum class TabAction {
        Nothing,
        Ignored,  ///< kept from the interface, as Nothing is
        Commit    ///< takes the text over and raises `onTab`
    };

    explicit TextEditor(UserInterface& interface);
    ~TextEditor() override;

    Property<Alignment> alignment{nullptr, Alignment::Left};
    /// In the window.
    Property<Rect> bounds{this, Rect{}};
    Property<bool> selectAll{nullptr, false};
    /// Nothing else of the interface can be used meanwhile; a click beside the box takes the text over.
    Property<bool> modal{nullptr, true};
    Property<TabAction> tabAction{nullptr, TabAction::Nothing};
    /// What is edited, in its font, size and colour.
    Text& text() { return *text_; }

    /// The text has been taken over. A handler deletes the editor only by `UserInterface::postDeferred`.
    NotifyEvent onCommit;
    NotifyEvent onCancel;
    NotifyEvent onTab;

    void begin();
    /// Takes the text over.
    void commit();
    /// Leaves it as it was.
    void cancel();
    bool isActive() const { return field_ != nullptr; }
    EditField* field() const { return field_; }

    void propertyChanged(AbstractProperty& property) override;
    void deferredCall(int argument) override;
    void linkRemoved(Component* other) override;

private:
    class Blocker;

    void end();
    void retire(Control* control);
    void returnHit(void*) { commit(); }
    void escapeHit(void*) { cancel(); }
    void tabHit(void*);
    void clickedBeside(void*);

    std::unique_ptr<Text> text_;
    EditField* field_ = nullptr;
    Control* blocker_ = nullptr;
    Control* formerFocus_ = nullptr;  ///< who gets the keyboard back
};

}  // namespace vanta::gui
