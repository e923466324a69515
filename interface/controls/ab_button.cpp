#include "interface/controls/ab_button.hpp"

namespace vanta::interface {

ABButton::ABButton(gui::UserInterface& interface, gui::Animator* animatedBy, Style* sharedStyle)
    : Button(interface, animatedBy, sharedStyle) {
    lineCount = 2;
    textAlignment = gui::Alignment::Center;
    text(0).text = std::string("A");
    text(1).text = std::string("B");
    showSlot(0);
}

void ABButton::showSlot(int slot) {
    for (int i = 0; i < lineCount; ++i) {
        gui::Color color = style().textColor.value();
        if (i != slot) color.alpha = kOtherAlpha;
        text(i).color = color;
    }
}

}  // namespace vanta::interface
