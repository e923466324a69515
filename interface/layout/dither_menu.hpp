#pragma once

#include "gui/controls/popup_button.hpp"
#include "interface/layout/layout_context.hpp"

namespace vanta::interface {

/// The button that says how the output is dithered, and the panel above it where that is chosen.
class DitherMenu {
public:
    static constexpr float kWidth = 88.0f;
    static constexpr float kWidthInCompact = 66.0f;

    /// The button goes into the factory's parent, the panel into the root.
    explicit DitherMenu(const LayoutContext& context);

    gui::PopupButton& button() const { return *button_; }
    gui::Control& panel() const { return *panel_; }

    void setForm(bool isCompact);
    /// After the button has moved.
    void place();
    /// After Dithering or Noise Shaping has changed.
    void follow();

private:
    std::string caption() const;

    const LayoutContext& context_;
    gui::PopupButton* button_;
    gui::AnimatedControl* panel_;
    gui::SelectButton* noiseShaping_ = nullptr;
    bool isCompact_ = false;
};

}  // namespace vanta::interface
