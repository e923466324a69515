#pragma once

#include "interface/binding/parameter_gestures.hpp"
#include "interface/frame/interface_product.hpp"
#include "interface/hints/help_hints.hpp"
#include "interface/menus/action_menu.hpp"

namespace vanta::interface {

/// The size of the interface: chosen in a menu, taken by the window if the host lets it, remembered, and
/// given up for a full screen. On the interface's thread.
class InterfaceSizing {
public:
    /// What a desktop and a host's window keep for themselves, in logical units of height.
    static constexpr int kHostMargin = 165;
    /// The row that is a fixed strip of controls.
    static constexpr int kCompact = 0;

    InterfaceSizing(gui::UserInterface& interface, GenericPlugin& plugin, ParameterGestures& usedGestures,
                    const InterfaceProduct& product, HelpHints& hints);

    /// A row of the fixed sizes, or PluginSettings::kFreeSize.
    void choose(int row);
    /// Stores the choice; `keepWindow` leaves the window for the next opening.
    void store(int row, bool keepWindow);
    /// Brings the window to the size that is wanted. Where the host does not take part, the user is told that
    /// it holds from the next opening on.
    void apply();
    /// The window has another size, by whomever.
    void windowResized();
    void fillMenu(MenuBuilder& menu);
    bool fits(int row) const;

    bool isCompact() const { return model_.settings().interfaceLayout == kCompact; }
    bool isFullScreen() const;
    /// Compact has one size only.
    bool canFullScreen() const { return !isCompact(); }
    void toggleFullScreen();

private:
    InterfaceSize wanted() const;

    gui::UserInterface& ui_;
    GenericPlugin& model_;
    ParameterGestures& gestures_;
    const InterfaceProduct& product_;
    HelpHints& hints_;
    bool applying_ = false;
};

/// Before the window opens: a size that the screen cannot show gives way. `workArea` in logical units.
void fitToScreen(GenericPlugin& model, InterfaceSize workArea);

}  // namespace vanta::interface
