#pragma once

#include <memory>
#include <string>

#include "gui/graphics/bitmap.hpp"
#include "gui/tree/control.hpp"

namespace vanta::gui {

/// Pictures to choose from, cells of equal width beside each other in two strips: as they are, and as the
/// chosen one is.
struct ImageCells {
    std::unique_ptr<Bitmap> off;
    std::unique_ptr<Bitmap> on;
    int count = 0;

    float width() const { return count > 0 ? off->logicalRect().width() / static_cast<float>(count) : 0.0f; }
    float height() const { return off->logicalRect().height(); }
    void paint(Canvas& canvas, int index, bool chosen, Point at) const;
};

/// A grid of pictures over the whole interface. A click on one picks it, a click beside or Escape turns away.
/// Arrows move through the grid.
class ImageMenu : public Control {
public:
    /// `cells` outlives the menu. `anchorPoint`, in the window, is where its left top would be.
    ImageMenu(UserInterface& interface, const ImageCells& shownCells, int columnCount, int chosenIndex,
              Point anchorPoint);

    /// After a choice `picked` is its index, else -1. A handler deletes the menu by
    /// `UserInterface::postDeferred`.
    NotifyEvent onClosed;
    int picked() const { return picked_; }
    Rect cellBounds(int index) const;

    bool takesFocus() const override { return true; }
    bool holdsFocus() const override { return true; }
    Rect focusBounds() override { return {}; }
    bool keyDown(const KeyPress& key) override;
    void mouseMove(Point point, int modifiers) override;
    void mouseUp(int button, Point point, int modifiers) override;
    void paint(Canvas& canvas) override;

private:
    int cellAt(Point point) const;
    void highlight(int index);
    void close(int picked);

    const ImageCells& cells_;
    int columns_;
    int highlighted_;
    int picked_ = -1;
    Rect panel_;
    std::unique_ptr<Bitmap> background_;
    std::unique_ptr<Bitmap> active_;
};

}  // namespace vanta::gui
