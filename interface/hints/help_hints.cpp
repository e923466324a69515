#include "interface/hints/help_hints.hpp"

#include "gui/tree/user_interface.hpp"

namespace vanta::interface {

HelpHints::HelpHints(HintWindow& window, SharedSettings& settings) : window_(window), settings_(settings) {
    window_.onClick.setHandler(this, &HelpHints::clicked);
}

void HelpHints::show(const std::string& text, int flags) {
    if (!(flags & kAlways) && !areEnabled()) return;
    if (text.empty()) {
        hide();
        return;
    }
    window_.show(text, flags & kSticky);
    if (flags & kSticky) window_.ui().hints().enabled = false;
}

void HelpHints::hide() {
    window_.hide();
    window_.ui().hints().enabled = true;
}

void HelpHints::clicked(void*) {
    if (window_.isSticky()) hide();
}

void HelpHints::setEnabled(bool enabled) {
    settings_.showInteractiveHelp = enabled;
    if (!enabled && !window_.isSticky()) hide();
}

void HelpHints::welcome(const std::string& text) {
    if (!settings_.showWelcomeHint) return;
    settings_.showWelcomeHint = false;
    show(text, kAlways | kSticky);
}

}  // namespace vanta::interface
