#include "interface/layout/captions.hpp"

namespace vanta::interface {
namespace {

constexpr float kHalfWidth = 60.0f;
constexpr float kHeight = 20.0f;
/// From the top of a line in the middle of that height to its base line.
constexpr float kBaseLine = 14.0f;
/// Capitals are seven units high.
constexpr float kPoints = 7.25f;

}  // namespace

gui::Label& addCaption(ControlFactory& factory, gui::Point onBaseLine, const std::string& text,
                       gui::Alignment alignment) {
    float left = onBaseLine.x - kHalfWidth;
    if (alignment == gui::Alignment::Left) left = onBaseLine.x;
    if (alignment == gui::Alignment::Right) left = onBaseLine.x - 2.0f * kHalfWidth;
    const gui::Rect place = gui::Rect::ofSize(left, onBaseLine.y - kBaseLine, 2.0f * kHalfWidth, kHeight);
    gui::Label& label = factory.addLabel(place, text, alignment);
    label.style().fontName = std::string(kSemiBold);
    label.style().fontSize = kPoints;
    label.style().letterSpacing = kCaptionSpacing;
    label.textColor = kOnPictureColor;
    return label;
}

}  // namespace vanta::interface
