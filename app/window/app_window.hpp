#pragma once

#include "app/window/app_editor.hpp"
#include "app/window/app_engine.hpp"
#include "app/window/transport_strip.hpp"
#include "gui/x11/x11_interface.hpp"
#include "interface/layout/vanta_interface.hpp"

namespace vanta {

/// The interface in a window of its own, until the user closes it; with a strip below it where a file plays.
class AppWindow final : private gui::UserInterface::KeyHook {
public:
    /// std::runtime_error if there is no display.
    AppWindow(AppEngine& engine, const gui::X11Settings& settings);
    ~AppWindow() override;

    void run() { ui_.run(); }

private:
    bool keyPressed(const gui::KeyPress& key) override;
    bool steered(const gui::KeyPress& key, Transport& transport);
    void fitToScreen();
    void compare();
    void set(const AbstractPluginParameter& parameter, bool on);
    void tick(void*);
    void closed(void*) { ui_.quit(); }

    AppEngine& engine_;
    VantaPlugin& model_;
    gui::X11Interface ui_;
    AppEditor editor_;
    std::optional<interface::VantaInterface> interface_;
    std::optional<interface::ControlFactory> stripFactory_;
    std::optional<TransportStrip> strip_;
    gui::UserInterface::KeyHook* interfaceKeys_ = nullptr;
    gui::Timer* pump_ = nullptr;  ///< faster while something plays
};

}  // namespace vanta
