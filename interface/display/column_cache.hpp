#pragma once

#include <functional>
#include <memory>

#include "gui/graphics/bitmap.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::interface {

/// A picture in memory that grows to the right, so that what does not change is painted once.
class ColumnCache {
public:
    /// Draws all columns; the clip of the canvas tells which are wanted.
    using Draw = std::function<void(gui::Canvas& canvas)>;

    /// The picture is to be painted anew.
    void forget() { columns_ = 0.0f; }
    /// It is not needed for now.
    void release();
    /// Paints what is missing of so many columns, for a picture of this size, in logical units.
    void extend(gui::UserInterface& interface, const gui::Rect& size, float columns, const Draw& draw);
    void paint(gui::Canvas& canvas) const;
    /// With its columns brought closer together, by a factor of 0.5 to 1. The result is the right edge of
    /// what was painted, in logical units.
    float paintSqueezed(gui::UserInterface& interface, gui::Canvas& canvas, float factor);

private:
    void clear(const gui::Rect& area);

    std::unique_ptr<gui::Bitmap> picture_;
    std::unique_ptr<gui::Bitmap> band_;  ///< some rows of it, squeezed
    gui::DeviceRect pixels_;
    float columns_ = 0.0f;
};

}  // namespace vanta::interface
