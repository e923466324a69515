#include "interface/menus/action_menu.hpp"

#include <utility>

#include "gui/tree/user_interface.hpp"

namespace vanta::interface {
namespace {

// Deferred calls.
constexpr int kAct = 0;
constexpr int kShow = 1;

}  // namespace

class ActionMenu::Item final : public gui::MenuItem {
public:
    Item(const std::string& shown, ActionMenu& menu, MenuBuilder::Action done)
        : MenuItem(shown), owner_(menu), action_(std::move(done)) {}

    void picked() override {
        owner_.chosen_ = action_;
        owner_.ui().postDeferred(owner_, kAct);
        MenuItem::picked();
    }

private:
    ActionMenu& owner_;
    MenuBuilder::Action action_;
};

gui::MenuItem& MenuBuilder::item(const std::string& text, Action action) {
    const int index = menu_.addItem(std::make_unique<ActionMenu::Item>(text, owner_, std::move(action)));
    return *menu_.item(index);
}

gui::MenuItem& MenuBuilder::note(const std::string& text) {
    gui::MenuItem& added = *menu_.item(menu_.addItem(text));
    added.enabled = false;
    return added;
}

MenuBuilder MenuBuilder::submenu(const std::string& text) {
    return {*menu_.item(menu_.addItem(text)), owner_};
}

ActionMenu::ActionMenu(gui::UserInterface& interface, Fill fillWith)
    : Component(interface), fill_(std::move(fillWith)), menu_(interface.createPopupMenu()) {}

gui::PopupMenu& ActionMenu::refill() {
    menu_->clear();
    MenuBuilder builder(*menu_, *this);
    fill_(builder);
    return *menu_;
}

void ActionMenu::show(gui::Point windowPoint) {
    refill().show(windowPoint);
}

void ActionMenu::showLater(gui::Point windowPoint) {
    place_ = windowPoint;
    ui().postDeferred(*this, kShow);
}

/// What is done may delete this.
void ActionMenu::deferredCall(int argument) {
    if (argument == kShow) return show(place_);
    if (const auto action = std::exchange(chosen_, nullptr)) action();
}

}  // namespace vanta::interface
