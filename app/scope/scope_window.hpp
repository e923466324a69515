#pragma once

#include "app/player/engine.hpp"
#include "gui/tree/timer.hpp"
#include "gui/x11/x11_interface.hpp"
#include "interface/page/exchange_link.hpp"
#include "interface/page/limiter_page.hpp"

namespace vanta {

/// A window over an engine, until the user closes it.
class ScopeWindow {
public:
    /// std::runtime_error if there is no display.
    ScopeWindow(Engine& engine, const gui::X11Settings& settings);

    void run() { ui_.run(); }

    // What keys do.

    void setMode(int index);
    void nextMeterScale(int step);
    void toggleBypass();
    void togglePause() { engine_.setPaused(!engine_.isPaused()); }
    void restart() { engine_.player().jump(0); }
    void quit() { ui_.quit(); }

private:
    void set(AbstractPluginParameter& parameter, float value);
    void frame(void*);
    void drain(void*);
    void closed(void*) { ui_.quit(); }

    Engine& engine_;
    interface::ExchangeLink link_;
    gui::X11Interface ui_;
    interface::LimiterPage* page_ = nullptr;
};

}  // namespace vanta
