#pragma once

#include <array>

#include "gui/controls/button.hpp"
#include "gui/controls/knob.hpp"
#include "gui/controls/light.hpp"
#include "gui/controls/switch.hpp"

namespace vanta::interface {

/// What kinds of buttons there are; each has a look of its own.
enum class ButtonStyle {
    Bar,          ///< a plate on a bar; one that is on has a light
    Hide,         ///< nothing at rest
    Dark,         ///< a well that holds a value and opens a menu
    Advanced,     ///< the tab of the advanced panel
    Transparent,  ///< text only
    Meter,        ///< on the moving picture
    Hover,        ///< a round veil behind an icon
    Hotspots,     ///< opens a menu of its own
    Clfe,         ///< centre and low-frequency switches of the channel link
};
inline constexpr int kButtonStyles = 9;

enum class KnobStyle { Large, Small, ExtraLarge };
inline constexpr int kKnobStyles = 3;

// The colours of text; resources/artwork has the rest.
inline constexpr gui::Color kValueColor = gui::Color::of(0xFFF0E9E6);
inline constexpr gui::Color kButtonTextColor = gui::Color::of(0xFFC8C8C8);
inline constexpr gui::Color kCaptionColor = gui::Color::of(0xFFAFA19A);
inline constexpr gui::Color kFocusColor = gui::Color::of(0xFFFFBBA9);
/// Of a control that cannot be used, and of its caption.
inline constexpr int kDisabledAlpha = 90;

/// The looks that the controls of one interface share, made once.
class Styles {
public:
    explicit Styles(gui::UserInterface& ui);

    gui::Button::Style& button(ButtonStyle style) const { return *buttons_[static_cast<std::size_t>(style)]; }
    gui::Knob::Style& knob(KnobStyle style) const { return *knobs_[static_cast<std::size_t>(style)]; }
    gui::Light::Style& light() const { return *light_; }
    gui::Switch::Style& gainSlider() const { return *gainSlider_; }

    /// A switch with pictures of its own for off and on, in place of a plate.
    static gui::Button::Style& makePictureStyle(gui::UserInterface& ui, const std::string& offImage,
                                                const std::string& onImage);

private:
    std::array<gui::Button::Style*, kButtonStyles> buttons_{};
    std::array<gui::Knob::Style*, kKnobStyles> knobs_{};
    gui::Light::Style* light_;
    gui::Switch::Style* gainSlider_;
};

}  // namespace vanta::interface
