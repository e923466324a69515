#pragma once

#include "gui/animation/animator.hpp"
#include "gui/tree/user_interface.hpp"
#include "interface/display/limiter_display.hpp"
#include "limiter/parameters/vanta_parameters.hpp"
#include "plugin/metering/level_exchange.hpp"

namespace vanta::interface {

/// What the limiter does, filling an interface: the display over its ground. It follows a table of
/// parameters and shows the levels of an exchange, which whoever drives the frames fills before each one.
class LimiterPage {
public:
    /// Parameters and levels outlive the interface, which owns all that is built. `sampleRate` in Hz.
    LimiterPage(gui::UserInterface& interface, const VantaParameters& parameters, LevelExchange& levels,
                float sampleRate);

    /// Shows what the parameters say by now.
    void follow();

    LimiterDisplay& display() { return *display_; }
    gui::Animator& animator() { return *animator_; }

private:
    void followScale();

    gui::UserInterface& ui_;
    const VantaParameters& parameters_;
    gui::Animator* animator_;
    LimiterDisplay* display_;
};

}  // namespace vanta::interface
