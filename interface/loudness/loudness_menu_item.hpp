#pragma once

#include <memory>

#include "gui/controls/button.hpp"
#include "gui/controls/popup_menu.hpp"
#include "gui/controls/text_editor.hpp"
#include "interface/loudness/meter_link.hpp"

namespace vanta::interface {

/// A value of a parameter, in a menu. "Custom..." lets the user type one.
class LoudnessMenuItem final : public gui::MenuItem {
public:
    static constexpr int kCustom = -1;

    /// `valueId` is the value. An empty text is the parameter's own.
    LoudnessMenuItem(MeterLink& meterLink, const AbstractPluginParameter& bound, int valueId,
                     const std::string& shown = {});
    /// "Custom...", typed over a control.
    LoudnessMenuItem(MeterLink& meterLink, const AbstractPluginParameter& bound, gui::Control& typedOver);

    void picked() override;

private:
    void choose(float value);
    void openEditor();
    void typed(void*);

    MeterLink& link_;
    const AbstractPluginParameter& parameter_;
    gui::Control* typedOver_ = nullptr;
    std::unique_ptr<gui::TextEditor> editor_;  ///< made on first use
};

/// A button that opens a menu below it.
class MenuButton final : public gui::Button {
public:
    explicit MenuButton(gui::UserInterface& interface, gui::Animator* animatedBy = nullptr,
                        Style* sharedStyle = nullptr);

    gui::PopupMenu& menu() { return *menu_; }
    void click() override;

private:
    std::unique_ptr<gui::PopupMenu> menu_;
};

}  // namespace vanta::interface
