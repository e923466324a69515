#include "interface/controls/control_factory.hpp"

#include <algorithm>

#include "gui/tree/root_control.hpp"

namespace vanta::interface {

ControlFactory::ControlFactory(gui::UserInterface& interface, gui::Animator* animatedBy,
                               const Styles& sharedStyles)
    : Component(interface), parent(&interface.rootControl()), animator_(animatedBy), styles_(sharedStyles) {}

void ControlFactory::adopt(gui::Control& control) {
    control.parent = parent;
    link(*this, control);
    controls_.push_back(&control);
}

void ControlFactory::linkRemoved(Component* other) {
    std::erase_if(controls_,
                  [&](gui::Control* control) { return static_cast<Component*>(control) == other; });
}

void ControlFactory::deleteFrom(std::size_t count) {
    // Each takes its children, which leave the list as well.
    while (controls_.size() > count) {
        gui::Control* const last = controls_.back();
        last->removeAllChildren();
        delete last;
    }
}

gui::Knob& ControlFactory::addKnob(gui::Point at, KnobStyle style) {
    gui::Knob::Style& look = styles_.knob(style);
    const gui::Rect& size = look.backNormal->logicalRect();
    return add<gui::Knob>(gui::Rect::ofSize(at.x, at.y, size.width(), size.height()), animator_, &look);
}

gui::SelectButton& ControlFactory::addSelectButton(const gui::Rect& at, ButtonStyle style) {
    auto& made = addButton<gui::SelectButton>(at, style);
    made.setIcon("IconSelect.png");
    return made;
}

gui::ToggleButton& ControlFactory::addPictureToggle(const gui::Rect& at, const std::string& offImage,
                                                    const std::string& onImage, const std::string& icon) {
    auto& made = add<gui::ToggleButton>(at, animator_, &Styles::makePictureStyle(ui(), offImage, onImage));
    if (!icon.empty()) made.setIcon(icon);
    return made;
}

gui::Image& ControlFactory::addImage(gui::Point at, const std::string& imageName) {
    auto& made = add<gui::Image>(gui::Rect{});
    made.load(imageName);
    made.setPosition(at);
    return made;
}

gui::Label& ControlFactory::addLabel(const gui::Rect& at, const std::string& text, gui::Alignment alignment) {
    auto& made = add<gui::Label>(at, text);
    made.alignment = alignment;
    made.textColor = kCaptionColor;
    return made;
}

}  // namespace vanta::interface
