#include "gui/graphics/canvas.hpp"
#include "gui/x11/menu_artwork.hpp"
#include "gui/x11/menu_panel.hpp"

namespace vanta::gui {
namespace {

// Below the pictures, and in their place where they are missing.
constexpr Color kPlate = Color::of(0xFF211A17);
constexpr Color kPlateUnderPointer = Color::of(0xFF3E322C);
constexpr Color kText = Color::of(0xFFC8C8C8);
constexpr Color kTextHighlighted = Color::of(0xFFF0E9E6);
constexpr int kInactiveAlpha = 90;

// In logical units.
constexpr float kTextLeft = 26.0f;
constexpr float kTextRight = 24.0f;
constexpr float kIconMargin = 5.0f;

/// In the middle of the row, at its left or right end.
void paintIcon(Canvas& canvas, const Bitmap& icon, const Rect& row, bool onTheRight, int alpha) {
    const Rect& size = icon.logicalRect();
    const float left = onTheRight ? row.right - kIconMargin - size.width() : row.left + kIconMargin;
    canvas.drawBitmap(icon, {left, row.top + (row.height() - size.height()) / 2.0f}, alpha);
}

void paintText(Canvas& canvas, Text& text, float left, const Rect& row, Color color, int alpha) {
    text.color = color;
    canvas.drawText(text, {left, row.top + (row.height() - text.height()) / 2.0f}, alpha);
}

}  // namespace

void MenuPanel::paintRow(Canvas& canvas, const Row& row, bool isHighlighted) const {
    const Rect area = visibleArea(row);
    if (row.separator) {
        canvas.drawStretched(artwork_.separator, area, artwork_.separator.logicalRect());
        return;
    }
    if (isHighlighted) {
        canvas.fillRect(area, kPlateUnderPointer);
        canvas.drawStretched(artwork_.activeItem, area, artwork_.activeItem.logicalRect());
    }
    const int alpha = row.active ? 255 : kInactiveAlpha;
    const Color color = isHighlighted ? kTextHighlighted : kText;
    paintText(canvas, *row.caption, kTextLeft, area, color, alpha);
    paintText(canvas, *row.accelerator, width_ - kTextRight - row.accelerator->width(), area, color, alpha);
    if (row.checked) paintIcon(canvas, artwork_.check, area, false, alpha);
    if (row.submenu) paintIcon(canvas, artwork_.submenu, area, true, alpha);
}

void MenuPanel::paint() {
    bitmap_.awaitShown();
    Canvas& canvas = bitmap_.canvas();
    const Rect all = bitmap_.logicalRect();
    const Rect inside{1.0f, 1.0f, all.right - 1.0f, all.bottom - 1.0f};
    canvas.fillRect(all, kPlate);
    canvas.drawStretched(artwork_.background, all, artwork_.background.logicalRect());
    canvas.clip = inside;
    for (int i = 0; i < rowCount(); ++i) {
        paintRow(canvas, rows_[static_cast<std::size_t>(i)], i == highlighted_);
    }
    canvas.clip = all;
    bitmap_.show(window_, bitmap_.pixelRect());
    XFlush(session_.display.get());
}

}  // namespace vanta::gui
