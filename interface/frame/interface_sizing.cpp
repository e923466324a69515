#include "interface/frame/interface_sizing.hpp"

#include <cmath>

#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"
#include "interface/binding/interface_events.hpp"

namespace vanta::interface {
namespace {

constexpr const char* kCannotResize =
    "Your host cannot dynamically resize the plug-in interface. To apply the new interface size, simply "
    "close "
    "the plug-in interface and then re-open it.";
constexpr const char* kCustomSize = "Custom Size";

InterfaceSize wholeSize(const gui::RootControl& root) {
    const gui::Rect bounds = root.content();
    return {static_cast<int>(std::lround(bounds.width())), static_cast<int>(std::lround(bounds.height()))};
}

}  // namespace

InterfaceSizing::InterfaceSizing(gui::UserInterface& interface, GenericPlugin& plugin,
                                 ParameterGestures& usedGestures, const InterfaceProduct& product,
                                 HelpHints& hints)
    : ui_(interface), model_(plugin), gestures_(usedGestures), product_(product), hints_(hints) {}

InterfaceSize InterfaceSizing::wanted() const {
    return {model_.interfaceWidth(), model_.interfaceHeight()};
}

bool InterfaceSizing::isFullScreen() const {
    return ui_.rootControl().fullScreen;
}

void InterfaceSizing::choose(int row) {
    store(row, false);
}

void InterfaceSizing::store(int row, bool keepWindow) {
    model_.settings().interfaceLayout = row;
    if (!keepWindow && !isFullScreen()) apply();
}

void InterfaceSizing::apply() {
    if (!ui_.isInterfaceThread()) {
        ui_.relay()->post(event::kApplySize, 0);
        ui_.relay()->wake();
        return;
    }
    gui::RootControl& root = ui_.rootControl();
    const InterfaceSize size = wanted();
    if (size == wholeSize(root)) return;
    Editor* const editor = gestures_.editor();
    applying_ = true;
    const bool taken = editor && editor->resize(size);
    if (taken) root.setSize(static_cast<float>(size.width), static_cast<float>(size.height) + root.footer);
    applying_ = false;
    if (!taken) hints_.show(kCannotResize, HelpHints::kAlways | HelpHints::kSticky);
}

/// Whoever pulls at the edge of the window chooses a size of their own. Compact is not to be stretched.
void InterfaceSizing::windowResized() {
    const Editor* const editor = gestures_.editor();
    if (applying_ || isFullScreen() || isCompact() || !editor || !editor->canResize()) return;
    const InterfaceSize size = wholeSize(ui_.rootControl());
    if (size.width > 0 && size.height > 0 && size != wanted()) model_.settings().setInterfaceSize(size);
}

bool InterfaceSizing::fits(int row) const {
    const Editor* const editor = gestures_.editor();
    const std::optional<InterfaceSize> area = editor ? editor->workArea() : std::nullopt;
    if (!area || row <= kCompact) return true;
    const InterfaceSize& size = model_.settings().sizes().fixed[static_cast<std::size_t>(row)];
    return size.width <= area->width && size.height <= area->height - kHostMargin;
}

void InterfaceSizing::fillMenu(MenuBuilder& menu) {
    const int current = model_.settings().interfaceLayout;
    for (int row = 0; row < static_cast<int>(product_.sizeNames.size()); ++row) {
        gui::MenuItem& item =
            menu.item(product_.sizeNames[static_cast<std::size_t>(row)], [this, row] { choose(row); });
        item.checked = row == current;
        item.enabled = fits(row);
    }
    const Editor* const editor = gestures_.editor();
    if (!editor || !editor->canResize() || !model_.canResize()) return;
    menu.separator();
    menu.item(kCustomSize, [this] { choose(PluginSettings::kFreeSize); }).checked =
        current == PluginSettings::kFreeSize;
}

void InterfaceSizing::toggleFullScreen() {
    if (!isFullScreen() && !canFullScreen()) return;
    Editor* const editor = gestures_.editor();
    if (editor && editor->toggleFullScreen()) return;
    ui_.rootControl().fullScreen = !isFullScreen();
}

void fitToScreen(GenericPlugin& model, InterfaceSize workArea) {
    model.settings().fitToScreen(workArea);
}

}  // namespace vanta::interface
