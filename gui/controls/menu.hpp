#pragma once

#include <memory>
#include <string>
#include <vector>

#include "foundation/notify_event.hpp"
#include "foundation/property.hpp"
#include "foundation/updated_object.hpp"

namespace vanta::gui {

class MenuItem;

/// A list of items. It tells of changes anywhere below it, once for all changes within an update block.
class Menu : public UpdatedObject {
public:
    Menu() = default;

    /// Takes ownership; returns the index.
    int addItem(std::unique_ptr<MenuItem> item);
    int addItem(const std::string& text, int id = 0);
    void addSeparator();
    /// Out of range: null.
    MenuItem* item(int index) const;
    int itemCount() const { return static_cast<int>(items_.size()); }
    void clear();
    bool hasItems() const { return !items_.empty(); }

    /// The visible items of this menu and all submenus, each before its own submenu: what a platform numbers.
    std::vector<MenuItem*> flattened() const;
    /// The first item with this id, here or below, or null.
    MenuItem* itemWithId(int id) const;
    /// From `from` on, itself included, in the direction of `step` (1 or -1): the next item that can be
    /// chosen, or -1.
    int nextSelectable(int from, int step) const;
    /// The item to highlight after `from` in the direction of `step` (1 or -1), past what cannot be, from the
    /// end to the start and round; -1 for `from` begins at either end. The result is -1 if no item fits.
    int nextHighlight(int from, int step) const;
    /// Only this item is checked; none if there is no such index.
    void checkOnly(int index);

    NotifyEvent onChange;
    /// The sender is the item, which may be one of a submenu.
    NotifyEvent onPicked;

protected:
    /// The list or one of its items has changed.
    virtual void changed() { changeNotification_.signal(); }

private:
    friend class MenuItem;

    std::vector<std::unique_ptr<MenuItem>> items_;
    UpdateNotification changeNotification_{*this, onChange, this};
};

/// An entry of a menu. One that has items is a submenu.
class MenuItem : public Menu, public PropertyOwner {
public:
    explicit MenuItem(const std::string& shown = {}, int identity = 0);

    /// What follows a tab is an accelerator in a column of its own; "-" is a separator.
    Property<std::string> text{this, std::string{}};
    Property<bool> checked{this, false};
    Property<bool> enabled{this, true};
    Property<int> id{this, 0};
    Property<bool> visible{this, true};

    Menu* parentMenu() const { return parentMenu_; }
    bool isSeparator() const { return text.value() == "-"; }
    /// Visible, enabled, and no separator.
    bool canHighlight() const { return visible && enabled && !isSeparator(); }
    /// Can be highlighted, and is no submenu.
    bool isSelectable() const { return canHighlight() && !hasItems(); }
    /// What stands before the tab, and after it.
    std::string caption() const;
    std::string accelerator() const;
    /// The user has chosen it.
    virtual void picked();

    void propertyChanged(AbstractProperty& property) override;

protected:
    void changed() override;

private:
    friend class Menu;
    Menu* parentMenu_ = nullptr;
};

}  // namespace vanta::gui
