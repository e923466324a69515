#pragma once

#include <functional>
#include <memory>
#include <string>

#include "gui/controls/popup_menu.hpp"
#include "gui/tree/component.hpp"

namespace vanta::interface {

class ActionMenu;

/// Fills a menu with items and what they do.
class MenuBuilder {
public:
    using Action = std::function<void()>;

    MenuBuilder(gui::Menu& filled, ActionMenu& owner) : menu_(filled), owner_(owner) {}

    gui::MenuItem& item(const std::string& text, Action action);
    /// One that cannot be chosen.
    gui::MenuItem& note(const std::string& text);
    void separator() { menu_.addSeparator(); }
    MenuBuilder submenu(const std::string& text);
    bool isEmpty() const { return !menu_.hasItems(); }

private:
    gui::Menu& menu_;
    ActionMenu& owner_;
};

/// A menu that is filled anew each time it opens. What is chosen is done when the menu has gone and whoever
/// opened it is off the stack: it may open dialogs, and close the interface.
class ActionMenu final : public gui::Component {
public:
    using Fill = std::function<void(MenuBuilder&)>;

    ActionMenu(gui::UserInterface& interface, Fill fillWith);

    /// On return the interface may have gone.
    void show(gui::Point windowPoint);
    /// The same with whoever asks off the stack.
    void showLater(gui::Point windowPoint);
    /// What would be shown now, for whoever wants to look.
    gui::PopupMenu& refill();

    void deferredCall(int argument) override;

private:
    friend class MenuBuilder;
    class Item;

    Fill fill_;
    std::unique_ptr<gui::PopupMenu> menu_;
    std::function<void()> chosen_;
    gui::Point place_;  ///< for `showLater`
};

}  // namespace vanta::interface
