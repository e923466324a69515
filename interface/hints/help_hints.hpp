#pragma once

#include <string>

#include "interface/hints/hint_window.hpp"
#include "plugin/settings/shared_settings.hpp"

namespace vanta::interface {

/// What the hint window shows and when: the hints of controls, while the user wants them, and messages.
class HelpHints {
public:
    /// Bits of `show`.
    static constexpr int kAlways = 1;  ///< also while hints are switched off
    static constexpr int kSticky = 2;  ///< until it is clicked; no hint takes its place

    HelpHints(HintWindow& window, SharedSettings& settings);

    /// Of the control under the pointer; empty for none.
    void hintChanged(const std::string& text) { show(text, 0); }
    void show(const std::string& text, int flags);
    /// What the user switches in the help menu.
    bool areEnabled() const { return settings_.showInteractiveHelp; }
    void setEnabled(bool enabled);
    /// Welcomes a new user, once for all time.
    void welcome(const std::string& text);

private:
    void clicked(void*);
    void hide();

    HintWindow& window_;
    SharedSettings& settings_;
};

}  // namespace vanta::interface
