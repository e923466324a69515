#pragma once

#include <memory>
#include <string>

#include "gui/graphics/bitmap.hpp"
#include "gui/graphics/text.hpp"
#include "gui/tree/control.hpp"

namespace vanta::gui {

/// A picture.
class Image : public Control {
public:
    enum class StretchMode {
        None,       ///< the control has the picture's size
        Stretched,  ///< the ends of the picture stay, its middle repeats
        Tiled       ///< the picture repeats in steps of `tile`
    };

    explicit Image(UserInterface& interface, const std::string& imageName = {});

    /// The point of the picture that is shown at the control's left top.
    Property<Point> origin{this, Point{}};
    /// Of the step of Tiled, and of the least end of Stretched, in logical units; 0 for the picture's own.
    Property<float> tile{this, 0.0f};
    Property<StretchMode> stretchMode{this, StretchMode::None};

    /// Empty if it cannot be read; the control then keeps its size.
    void load(const std::string& imageName);
    const Bitmap& bitmap() const { return *bitmap_; }

    int alphaAt(Point point) override;
    void propertyChanged(AbstractProperty& property) override;
    void paint(Canvas& canvas) override;

private:
    void takeSize();
    std::unique_ptr<Bitmap> bitmap_;
};

/// A text on a picture that grows with it.
class ImageLabel : public Control {
public:
    static constexpr float kMargin = 5.0f;

    explicit ImageLabel(UserInterface& interface, const std::string& imageName = {});

    Text& text() { return *text_; }
    /// The width at which text and margins fit.
    float fittingWidth();

    void paint(Canvas& canvas) override;

private:
    void textChanged(void*) { markDirty(); }

    std::unique_ptr<Bitmap> bitmap_;
    std::unique_ptr<Text> text_;
};

}  // namespace vanta::gui
