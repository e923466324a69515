#pragma once

#include "gui/graphics/color.hpp"
#include "gui/graphics/gradient.hpp"
#include "gui/tree/control.hpp"

namespace vanta::gui {

/// A rectangle in a colour or a gradient, with a border inside its bounds. The pointer goes through where it
/// is not opaque.
class Shape : public Control {
public:
    enum class Kind {
        Rectangle,
        Frame  ///< the border only
    };
    /// In which the gradient runs.
    enum class Direction { Left, Up, Right, Down };

    using Control::Control;

    Property<Kind> kind{this, Kind::Rectangle};
    Property<Color> color{this, Color{0, 0, 0, 255}};
    Property<Color> borderColor{this, Color{}};
    /// Logical units.
    Property<float> borderWidth{this, 0.0f};
    /// In place of the colour, unless it is empty.
    Property<Gradient> gradient{this, Gradient{}};
    Property<Direction> direction{this, Direction::Down};

    int alphaAt(Point point) override;
    void propertyChanged(AbstractProperty& property) override;
    void paint(Canvas& canvas) override;

private:
    Rect inside() const;
    /// Of a point along the gradient, 0 to 1.
    float positionOf(Point point) const;
    void paintGradient(Canvas& canvas) const;
};

}  // namespace vanta::gui
