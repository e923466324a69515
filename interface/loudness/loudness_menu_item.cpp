#include "interface/loudness/loudness_menu_item.hpp"

#include <cmath>

#include "gui/tree/user_interface.hpp"
#include "interface/meters/level_reading.hpp"

namespace vanta::interface {
namespace {

/// Above and below the field, within the button that it covers.
constexpr float kFieldInset = 1.0f;

}  // namespace

LoudnessMenuItem::LoudnessMenuItem(MeterLink& meterLink, const AbstractPluginParameter& bound, int valueId,
                                   const std::string& shown)
    : MenuItem(shown.empty() ? bound.text(static_cast<float>(valueId)) : shown, valueId),
      link_(meterLink),
      parameter_(bound) {}

LoudnessMenuItem::LoudnessMenuItem(MeterLink& meterLink, const AbstractPluginParameter& bound,
                                   gui::Control& typedOver)
    : MenuItem("Custom...", kCustom), link_(meterLink), parameter_(bound), typedOver_(&typedOver) {}

void LoudnessMenuItem::picked() {
    if (typedOver_) {
        openEditor();
    } else {
        choose(static_cast<float>(id.value()));
    }
    MenuItem::picked();
}

void LoudnessMenuItem::choose(float value) {
    if (!isSameReading(value, parameter_.value())) link_.choose(parameter_, value);
}

void LoudnessMenuItem::openEditor() {
    if (!editor_) {
        editor_ = typedOver_->ui().createTextEditor();
        editor_->alignment = gui::Alignment::Center;
        editor_->selectAll = true;
        editor_->onCommit.setHandler(this, &LoudnessMenuItem::typed);
    }
    gui::Rect field = typedOver_->windowBounds();
    field.top += kFieldInset;
    field.bottom -= kFieldInset;
    editor_->bounds = field;
    editor_->text().text = parameter_.text(parameter_.value());
    editor_->begin();
}

/// What means no value leaves the old one.
void LoudnessMenuItem::typed(void*) {
    float value = 0.0f;
    if (parameter_.parseText(editor_->text().text, &value)) choose(value);
}

MenuButton::MenuButton(gui::UserInterface& interface, gui::Animator* animatedBy, Style* sharedStyle)
    : Button(interface, animatedBy, sharedStyle), menu_(interface.createPopupMenu()) {}

void MenuButton::click() {
    const std::shared_ptr<gui::EventRelay> relay = ui().relay();
    menu_->show(toWindow(gui::Point{0.0f, localBounds().height()}));
    // The interface may have gone under the menu.
    if (relay->isOpen()) Button::click();
}

}  // namespace vanta::interface
