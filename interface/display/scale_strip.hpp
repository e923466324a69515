#pragma once

#include "interface/display/limiter_display.hpp"
#include "interface/meters/display_grid_control.hpp"

namespace vanta::interface {

/// The numbers of a display's scale on dark glass, so that they can be read on the moving picture.
class ScaleStrip {
public:
    static constexpr float kWidth = 44.0f;

    ScaleStrip(gui::Control& parent, LimiterDisplay& display);

    DisplayGrid& grid() { return numbers_->grid(); }
    gui::Control& control() { return *glass_; }
    /// Where it ends, at the left of the meters; `height` is the parent's.
    void place(float right, float height);
    /// No number stands there, in the parent's coordinates.
    void keepClear(const std::vector<gui::Rect>& areas);

private:
    gui::Control* glass_;
    DisplayGridControl* numbers_;
};

}  // namespace vanta::interface
