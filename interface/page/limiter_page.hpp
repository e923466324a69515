#pragma once

#include <optional>

#include "gui/animation/animator.hpp"
#include "gui/controls/image.hpp"
#include "gui/tree/component.hpp"
#include "interface/display/limiter_display.hpp"
#include "interface/display/scale_strip.hpp"
#include "interface/loudness/vanta_meter_panel.hpp"
#include "interface/page/exchange_link.hpp"

namespace vanta::interface {

/// What the limiter does, filling an interface: the display with its scale, and the panel with the meters.
/// It follows a table of parameters and shows the levels of an exchange, which whoever drives the frames
/// fills at the start of each one.
class LimiterPage final : public gui::Component {
public:
    /// The link outlives the interface, which owns all that is built. `sampleRate` in Hz.
    LimiterPage(gui::UserInterface& interface, ExchangeLink& link, float sampleRate);
    ~LimiterPage() override;

    /// Shows what the parameters say by now.
    void follow();

    LimiterDisplay& display() { return *display_; }
    VantaMeterPanel& panel() { return *panel_; }
    gui::Animator& animator() { return *animator_; }

private:
    void buildBars();
    gui::Image& addBar(const char* picture, float tile);
    void layOut(void* = nullptr);

    ExchangeLink& link_;
    gui::Animator* animator_;
    LimiterDisplay* display_;
    std::optional<ScaleStrip> scale_;
    VantaMeterPanel* panel_ = nullptr;
    gui::Image* topBar_ = nullptr;
    gui::Image* bottomBar_ = nullptr;
    VantaParameters::DisplayMode mode_ = VantaParameters::DisplayMode::SlowDown;
    bool isShown_ = true;
};

}  // namespace vanta::interface
