#include "gui/controls/menu.hpp"

#include <utility>

namespace vanta::gui {

int Menu::addItem(std::unique_ptr<MenuItem> item) {
    item->parentMenu_ = this;
    items_.push_back(std::move(item));
    changed();
    return itemCount() - 1;
}

int Menu::addItem(const std::string& text, int id) {
    return addItem(std::make_unique<MenuItem>(text, id));
}

void Menu::addSeparator() {
    addItem("-");
}

MenuItem* Menu::item(int index) const {
    return index >= 0 && index < itemCount() ? items_[static_cast<std::size_t>(index)].get() : nullptr;
}

void Menu::clear() {
    if (items_.empty()) return;
    items_.clear();
    changed();
}

std::vector<MenuItem*> Menu::flattened() const {
    std::vector<MenuItem*> all;
    for (const auto& item : items_) {
        if (!item->visible) continue;
        all.push_back(item.get());
        const std::vector<MenuItem*> below = item->flattened();
        all.insert(all.end(), below.begin(), below.end());
    }
    return all;
}

MenuItem* Menu::itemWithId(int id) const {
    for (const auto& item : items_) {
        if (item->id == id) return item.get();
        if (MenuItem* below = item->itemWithId(id)) return below;
    }
    return nullptr;
}

int Menu::nextSelectable(int from, int step) const {
    for (int i = from; i >= 0 && i < itemCount(); i += step) {
        if (item(i)->isSelectable()) return i;
    }
    return -1;
}

int Menu::nextHighlight(int from, int step) const {
    const int count = itemCount();
    int at = from >= 0 ? from : (step > 0 ? -1 : count);
    for (int tried = 0; tried < count; ++tried) {
        at = (at + step + count) % count;
        if (item(at)->canHighlight()) return at;
    }
    return -1;
}

void Menu::checkOnly(int index) {
    const UpdateBlock block(*this);
    for (int i = 0; i < itemCount(); ++i) item(i)->checked = i == index;
}

MenuItem::MenuItem(const std::string& shown, int identity) {
    text = shown;
    id = identity;
}

std::string MenuItem::caption() const {
    return text.value().substr(0, text.value().find('\t'));
}

std::string MenuItem::accelerator() const {
    const std::size_t tab = text.value().find('\t');
    return tab == std::string::npos ? std::string{} : text.value().substr(tab + 1);
}

void MenuItem::picked() {
    onPicked.raise(this);
    for (Menu* menu = parentMenu_; menu;) {
        menu->onPicked.raise(this);
        const auto* asItem = dynamic_cast<MenuItem*>(menu);
        menu = asItem ? asItem->parentMenu_ : nullptr;
    }
}

void MenuItem::propertyChanged(AbstractProperty& /*property*/) {
    changed();
}

void MenuItem::changed() {
    Menu::changed();
    if (parentMenu_) parentMenu_->changed();
}

}  // namespace vanta::gui
