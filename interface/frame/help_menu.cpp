#include "interface/frame/help_menu.hpp"

namespace vanta::interface {

void fillHelpMenu(MenuBuilder& menu, HelpHints& hints, const std::string& vendor,
                  const HelpActions& actions) {
    menu.item("Help Topics", actions.openHelp);
    menu.item("Show Interactive Help Hints", [&hints] { hints.setEnabled(!hints.areEnabled()); }).checked =
        hints.areEnabled();
    menu.separator();
    menu.item(vendor + " Web Site", actions.openWebSite);
    menu.item(vendor + " Support", actions.openSupport);
    menu.separator();
    menu.item("About", actions.showAbout);
}

}  // namespace vanta::interface
