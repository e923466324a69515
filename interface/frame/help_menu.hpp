#pragma once

#include <functional>

#include "interface/hints/help_hints.hpp"
#include "interface/menus/action_menu.hpp"

namespace vanta::interface {

/// What the items of the help menu lead to.
struct HelpActions {
    std::function<void()> openHelp;
    std::function<void()> openWebSite;
    std::function<void()> openSupport;
    std::function<void()> showAbout;
};

void fillHelpMenu(MenuBuilder& menu, HelpHints& hints, const std::string& vendor, const HelpActions& actions);

}  // namespace vanta::interface
