#include "gui/graphics/canvas.hpp"
#include "gui/x11/menu_panel.hpp"

namespace vanta::gui {
namespace {

constexpr Color kPlate = Color::of(0xFF312722);
constexpr Color kPlateUnderPointer = Color::of(0xFF4C3E37);
constexpr Color kEdgeColor = Color::of(0xFF0B0706);
constexpr Color kLine = Color::of(0xFF584941);
constexpr Color kText = Color::of(0xFFC8C8C8);
constexpr Color kTextHighlighted = Color::of(0xFFF0E9E6);
constexpr Color kAccent = Color::of(0xFFFFBBA9);
constexpr int kInactiveAlpha = 90;

// In logical units.
constexpr float kTextLeft = 26.0f;
constexpr float kTextRight = 24.0f;
constexpr float kMarkWidth = 1.5f;

void paintCheck(Canvas& canvas, const Rect& row) {
    const float middle = (row.top + row.bottom) / 2.0f;
    canvas.drawLine({10.0f, middle}, {13.0f, middle + 3.0f}, kAccent, kMarkWidth);
    canvas.drawLine({13.0f, middle + 3.0f}, {18.0f, middle - 4.0f}, kAccent, kMarkWidth);
}

void paintArrow(Canvas& canvas, const Rect& row) {
    const float middle = (row.top + row.bottom) / 2.0f;
    const float tip = row.right - 8.0f;
    canvas.drawLine({tip - 3.5f, middle - 3.5f}, {tip, middle}, kText, kMarkWidth);
    canvas.drawLine({tip, middle}, {tip - 3.5f, middle + 3.5f}, kText, kMarkWidth);
}

void paintText(Canvas& canvas, Text& text, float left, const Rect& row, Color color, int alpha) {
    text.color = color;
    canvas.drawText(text, {left, row.top + (row.height() - text.height()) / 2.0f}, alpha);
}

}  // namespace

void MenuPanel::paintRow(Canvas& canvas, const Row& row, bool isHighlighted) const {
    const Rect area = visibleArea(row);
    if (row.separator) {
        const float middle = area.top + 4.0f;
        canvas.fillRect({area.left + 8.0f, middle, area.right - 8.0f, middle + 1.0f}, kLine);
        return;
    }
    if (isHighlighted) canvas.fillRect(area, kPlateUnderPointer);
    const int alpha = row.active ? 255 : kInactiveAlpha;
    const Color color = isHighlighted ? kTextHighlighted : kText;
    paintText(canvas, *row.caption, kTextLeft, area, color, alpha);
    paintText(canvas, *row.accelerator, width_ - kTextRight - row.accelerator->width(), area, color, alpha);
    if (row.checked) paintCheck(canvas, area);
    if (row.submenu) paintArrow(canvas, area);
}

void MenuPanel::paint() {
    bitmap_.awaitShown();
    Canvas& canvas = bitmap_.canvas();
    const Rect all = bitmap_.logicalRect();
    const Rect inside{1.0f, 1.0f, all.right - 1.0f, all.bottom - 1.0f};
    canvas.fillRect(all, kPlate);
    canvas.clip = inside;
    for (int i = 0; i < rowCount(); ++i) {
        paintRow(canvas, rows_[static_cast<std::size_t>(i)], i == highlighted_);
    }
    canvas.clip = all;
    canvas.drawFrame(inside, kEdgeColor, 1.0f);
    bitmap_.show(window_, bitmap_.pixelRect());
    XFlush(session_.display.get());
}

}  // namespace vanta::gui
