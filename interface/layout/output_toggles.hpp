#pragma once

#include <array>

#include "interface/layout/layout_context.hpp"

namespace vanta::interface {

/// Filter DC Offset, Side Chain Triggering, Unity Gain and Audition Limiting. Who has them in two places
/// binds those that are shown.
class OutputToggles {
public:
    static constexpr float kStep = 23.0f;
    static constexpr float kWidth = 89.0f;
    static constexpr float kHeight = 16.0f;

    /// Into the factory's parent, side by side from `at`.
    OutputToggles(const LayoutContext& context, gui::Point at);

    void bind();

private:
    static constexpr int kCount = 4;

    const LayoutContext& context_;
    std::array<gui::ToggleButton*, kCount> buttons_{};
};

/// The switch of a parameter, on its own: a rim of colour around an icon.
gui::ToggleButton& addToggle(ControlFactory& factory, gui::Point at, const std::string& colour,
                             const std::string& icon);

}  // namespace vanta::interface
