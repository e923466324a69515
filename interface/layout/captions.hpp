#pragma once

#include "interface/controls/control_factory.hpp"

namespace vanta::interface {

inline constexpr const char* kSemiBold = "Inter Medium";
/// Between the letters of a caption, as in the captions that are pictures.
inline constexpr float kCaptionSpacing = 0.6f;
/// Of a text that stands on the moving picture.
inline constexpr gui::Color kOnPictureColor{230, 233, 240, 255};

/// A word in capitals, its letters on `baseLine`, from `x` to the left, the right or both sides.
gui::Label& addCaption(ControlFactory& factory, gui::Point onBaseLine, const std::string& text,
                       gui::Alignment alignment = gui::Alignment::Center);

}  // namespace vanta::interface
