#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "gui/graphics/bitmap.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::interface {

/// A picture that moves, in narrow strips: each column is painted once, and moving costs a copy. The strips
/// form a ring, of which the newest is being written.
class StripRing {
public:
    /// Columns of a strip where a renderer uploads those that have changed, and where pixels are copied in
    /// memory, which is quicker by long rows.
    static constexpr int kUploadedWidth = 32;
    static constexpr int kCopiedWidth = 512;

    /// Draws at a canvas what lies in an area of it. Parts may lie outside.
    using Draw = std::function<void(gui::Canvas& canvas, const gui::Rect& area)>;

    explicit StripRing(gui::UserInterface& interface) : ui_(interface) {}

    /// Enough strips for a picture of this size, in logical units, without a content. To be cleared then.
    void resize(float width, float height, int stripWidth);
    int stripWidth() const { return width_; }
    /// Empties all strips; `drawOld` fills those that are not being written.
    void clear(const Draw& drawOld);
    /// Appends columns. `draw` is called for each strip that gets some; the area has the width of all.
    void write(int columns, const Draw& draw);
    /// With the newest column left of `x`.
    void paint(gui::Canvas& canvas, float x, int alpha) const;

private:
    void nextStrip();

    gui::UserInterface& ui_;
    std::vector<std::unique_ptr<gui::Bitmap>> strips_;
    std::size_t current_ = 0;  ///< the strip that is written; older ones follow
    int column_ = 0;           ///< columns of it that are written, below their width
    int width_ = kUploadedWidth;
    float height_ = 0.0f;
};

}  // namespace vanta::interface
