#include "app/gallery/section.hpp"
#include "gui/controls/image.hpp"
#include "gui/controls/image_select_button.hpp"
#include "gui/controls/popup_button.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gallery {
namespace {

gui::Button::Style& makeStyle(const Workshop& shop, const std::string& kind) {
    auto& style = shop.ui().make<gui::Button::Style>();
    style.textColor = kButtonText;
    style.textAlignment = gui::Alignment::Center;
    style.loadKind(kind);
    return style;
}

/// What the popup button opens.
gui::Control& addPanel(const Workshop& shop, const gui::Rect& at) {
    auto& panel = shop.ui().make<gui::Image>();
    panel.stretchMode = gui::Image::StretchMode::Stretched;
    panel.load("PopupBackground");
    panel.bounds = at;
    panel.parent = &shop.parent;
    auto& text = shop.ui().make<gui::MultiLabel>(2);
    text.alignment = gui::Alignment::Center;
    text.setText(0, "A panel");
    text.setText(1, "opened by its button");
    text.bounds = panel.localBounds();
    text.parent = &panel;
    return panel;
}

}  // namespace

void addPanels(const Workshop& shop, gui::Point at) {
    addCaption(shop, "Panel", gui::Rect::ofSize(at.x, at.y - 16.0f, 80.0f, 14.0f));
    auto& popup = shop.ui().make<gui::PopupButton>(shop.animator, &makeStyle(shop, "Bar"));
    popup.setCaption("Open");
    popup.bounds = gui::Rect::ofSize(at.x, at.y, 80.0f, 20.0f);
    popup.parent = &shop.parent;
    popup.panel = &addPanel(shop, gui::Rect::ofSize(at.x - 8.0f, at.y + 22.0f, 150.0f, 60.0f));
    popup.on = true;

    addCaption(shop, "Grid", gui::Rect::ofSize(at.x + 92.0f, at.y - 16.0f, 60.0f, 14.0f));
    auto& mode = shop.ui().make<gui::ImageSelectButton>(shop.animator, &makeStyle(shop, "Meter"));
    mode.setPictures("DisplayIconsOff", "DisplayIconsOn", 5);
    mode.value = 2;
    mode.bounds = gui::Rect::ofSize(at.x + 92.0f, at.y, 36.0f, 20.0f);
    mode.accessibleName = "Display Mode";
    mode.parent = &shop.parent;
}

}  // namespace vanta::gallery
