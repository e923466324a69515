#pragma once

#include <memory>

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

    explicit Shape(UserInterface& interface);
    ~Shape() override;

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
    void resized() override;
    void refreshTree() override;

private:
    Rect inside() const;
    /// Of a point along the gradient, 0 to 1.
    float positionOf(Point point) const;
    void buildGradient();
    void paintGradient(Canvas& canvas) const;

    std::unique_ptr<Bitmap> gradientPicture_;  ///< of what is inside; made when it is painted first
};

}  // namespace vanta::gui
