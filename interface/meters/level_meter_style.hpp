#pragma once

#include <memory>
#include <string>

#include "gui/graphics/bitmap.hpp"
#include "gui/graphics/gradient.hpp"
#include "gui/tree/component.hpp"

namespace vanta::interface {

/// How meters of one kind look. Gradients go from the upper end of a scale, 0, to its lower end, 1. Whoever
/// changes one calls `LevelMeterDisplay::rebuild` of the meters that have the style. Their interface owns it.
class LevelMeterStyle : public gui::Component {
public:
    explicit LevelMeterStyle(gui::UserInterface& interface) : Component(interface) { setImages({}, {}); }

    /// One repeated element of a meter, white, as it lies on an upright one; and the letters of channels, 16
    /// cells along their long side. What has no name, or cannot be read, is empty.
    void setImages(const std::string& partImage, const std::string& labelImage);
    /// One gradient for all, faint behind the bars.
    void setGradient(const gui::Gradient& gradient);

    /// Of the lines between groups of channels.
    Property<int> separatorAlpha{nullptr, 128};
    gui::Gradient backGradient;
    gui::Gradient barGradient;
    gui::Gradient slowGradient;
    std::unique_ptr<gui::Bitmap> channelLabels;
    std::unique_ptr<gui::Bitmap> part;
    std::unique_ptr<gui::Bitmap> partBack;  ///< empty: `part` lies behind the bars too
};

}  // namespace vanta::interface
