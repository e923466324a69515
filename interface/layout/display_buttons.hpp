#pragma once

#include "gui/controls/popup_button.hpp"
#include "interface/layout/layout_context.hpp"

namespace vanta::interface {

/// Display Mode, True Peak Metering and Meter Scale, side by side over the display.
class DisplayButtons {
public:
    static constexpr float kWidth = 178.0f;
    static constexpr float kHeight = 20.0f;

    /// Bound, in a group of the factory's parent.
    explicit DisplayButtons(const LayoutContext& context);

    gui::Control& group() const { return *group_; }
    /// What Display Mode opens, in the window.
    gui::Control& modes() const { return *modes_; }
    void place(gui::Point at);
    void follow(const ParameterChange& change);

private:
    class ModePanel;

    const LayoutContext& context_;
    gui::Control* group_;
    gui::PopupButton* modeButton_;
    gui::AnimatedControl* modes_;
    gui::ToggleButton* choice_;
};

/// True Peak Metering as a button on the picture, bound.
gui::ToggleButton& addTruePeakMetering(const LayoutContext& context, const gui::Rect& at);
/// Meter Scale, bound. A narrow one shows short names.
gui::SelectButton& addMeterScale(const LayoutContext& context, const gui::Rect& at, bool isNarrow = false);

}  // namespace vanta::interface
