#pragma once

#include "app/window/app_editor.hpp"
#include "app/window/app_engine.hpp"
#include "gui/x11/x11_interface.hpp"
#include "interface/layout/vanta_interface.hpp"

namespace vanta {

/// The interface in a window of its own, until the user closes it.
class AppWindow final : private gui::UserInterface::KeyHook {
public:
    /// std::runtime_error if there is no display.
    AppWindow(AppEngine& engine, const gui::X11Settings& settings);
    ~AppWindow() override;

    void run() { ui_.run(); }

private:
    bool keyPressed(const gui::KeyPress& key) override;
    void compare();
    void set(const AbstractPluginParameter& parameter, bool on);
    void tick(void*);
    void closed(void*) { ui_.quit(); }

    AppEngine& engine_;
    VantaPlugin& model_;
    AppEditor editor_;
    gui::X11Interface ui_;
    std::optional<interface::VantaInterface> interface_;
    gui::UserInterface::KeyHook* interfaceKeys_ = nullptr;
};

}  // namespace vanta
