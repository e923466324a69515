#include "app/gallery/section.hpp"

#include "gui/tree/user_interface.hpp"

namespace vanta::gallery {

gui::Label& addCaption(const Workshop& shop, const std::string& text, const gui::Rect& at,
                       gui::Alignment alignment) {
    auto& label = shop.ui().make<gui::Label>(text);
    label.style().fontSize = 7.5f;
    label.textColor = kCaption;
    label.alignment = alignment;
    label.bounds = at;
    label.parent = &shop.parent;
    return label;
}

ValueLabel::ValueLabel(gui::UserInterface& interface, const Workshop& shop, gui::ValueControl& control)
    : Label(interface), control_(control) {
    const gui::Rect& above = control.bounds.value();
    const float middle = (above.left + above.right) / 2.0f;
    style().fontSize = 8.25f;
    textColor = kValue;
    alignment = gui::Alignment::Center;
    bounds = gui::Rect::ofSize(middle - 40.0f, above.bottom, 80.0f, 16.0f);
    parent = &shop.parent;
    control.onValueChanged.addHandler(this, &ValueLabel::valueChanged);
    valueChanged(nullptr);
}

}  // namespace vanta::gallery
