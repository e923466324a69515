#include "gui/controls/button_look.hpp"

namespace vanta::gui {

void ButtonLook::copyFrom(const ButtonLook& other) {
    backgroundStyle = other.backgroundStyle.value();
    buttonStyle = other.buttonStyle.value();
    solid = other.solid.value();
    toggle = other.toggle.value();
    textAlignment = other.textAlignment.value();
    textOffset = other.textOffset.value();
    textRestAlpha = other.textRestAlpha.value();
    textOverrideAlpha = other.textOverrideAlpha.value();
    overlayStyle = other.overlayStyle.value();
    overlayAlignment = other.overlayAlignment.value();
    overlayMargin = other.overlayMargin.value();
    overlayRestAlpha = other.overlayRestAlpha.value();
    overlayOffset = other.overlayOffset.value();
    overlayVerticalOffset = other.overlayVerticalOffset.value();
    lineSpacing = other.lineSpacing.value();
    momentary = other.momentary.value();
    hitInset = other.hitInset.value();
}

}  // namespace vanta::gui
