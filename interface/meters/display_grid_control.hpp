#pragma once

#include "interface/meters/display_grid.hpp"

namespace vanta::interface {

/// A grid as a control of its own, beside a display or alone. The pointer goes through it.
class DisplayGridControl : public gui::Control {
public:
    explicit DisplayGridControl(gui::UserInterface& interface) : Control(interface) {}

    DisplayGrid& grid() { return grid_; }

    int alphaAt(gui::Point) override { return 0; }
    void resized() override {
        Control::resized();
        grid_.invalidate();
    }
    void paint(gui::Canvas& canvas) override { grid_.paint(canvas); }

private:
    DisplayGrid grid_{*this};
};

}  // namespace vanta::interface
