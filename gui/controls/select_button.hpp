#pragma once

#include <memory>
#include <string>

#include "gui/controls/button.hpp"
#include "gui/controls/popup_menu.hpp"
#include "gui/controls/value_drag_mapper.hpp"

namespace vanta::gui {

/// An entry of a select button's menu.
class SelectMenuItem : public MenuItem {
public:
    SelectMenuItem(const std::string& shown, std::string onButton, int itemIndex)
        : MenuItem(shown, itemIndex), shortText(std::move(onButton)), index(itemIndex) {}

    /// What the button shows of it.
    const std::string shortText;
    const int index;
};

/// Its value is the index of an item of a menu, which a click opens. The wheel and the arrow keys step
/// through the items that can be chosen.
class SelectButton : public Button {
public:
    explicit SelectButton(UserInterface& interface, Animator* animatedBy = nullptr,
                          Style* sharedStyle = nullptr);
    ~SelectButton() override;

    /// The caption for several values at once, and for a value that the menu does not have.
    Property<std::string> multipleText{this, "(Multiple)"};
    Property<std::string> emptyText{this, std::string{}};
    /// Another select button whose menu this one shows instead of its own; what is chosen there holds for
    /// both.
    Property<SelectButton*> mirror{this, nullptr};

    /// Returns the item's index. Without a short text the button shows all of the text.
    int addItem(const std::string& text, const std::string& shortText = {});
    PopupMenu& menu() { return *menu_; }
    /// Of the item at the value, or of the nearest that can be chosen.
    std::string caption() const;

    void click() override;
    bool wheel(WheelPhase phase, Point point, int modifiers, const WheelMove& move) override;
    bool keyDown(const KeyPress& key) override;
    void deferredCall(int argument) override;
    void linkRemoved(Component* other) override;
    void propertyChanged(AbstractProperty& property) override;

protected:
    void valueChanged(AbstractProperty& property) override;
    /// Shows what can be chosen. The interface may go meanwhile.
    virtual void openMenu();
    /// Within a gesture or as one of its own.
    void choose(int itemIndex);
    const Menu& items() const { return mirror ? mirror.value()->items() : *menu_; }

private:
    void menuChanged(void*);
    void picked(void* sender);
    void refreshCaption();
    void setMirrored(SelectButton* other);
    /// How far a wish to move by `steps` goes: on past what cannot be chosen, and not beyond the ends.
    int stepOver(int steps) const;

    std::unique_ptr<PopupMenu> menu_;
    ValueDragMapper mapper_;
    SelectButton* mirrored_ = nullptr;  ///< whose menu is listened to
    bool refreshPending_ = false;
};

}  // namespace vanta::gui
