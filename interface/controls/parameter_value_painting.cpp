#include <algorithm>
#include <cmath>

#include "gui/controls/alignment.hpp"
#include "gui/graphics/bitmap.hpp"
#include "gui/graphics/canvas.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"
#include "interface/controls/parameter_value_display.hpp"

namespace vanta::interface {
namespace {

/// Of the picture, which is the panel's shadow.
constexpr float kInset = 10.0f;
constexpr float kSideMargin = 7.0f;
constexpr float kLineMargin = 3.0f;
constexpr float kLeastWidth = 48.0f;
constexpr float kLineHeight = 15.0f;
/// From the picture to the control: a caption of the control's stays in view.
constexpr float kGap = 8.0f;

}  // namespace

/// Above the control, or below where there is no room; always within the window.
void ParameterValueDisplay::place() {
    float width = kLeastWidth;
    for (const Row& row : rows_) width = std::max({width, row.name->width(), row.value->width()});
    width += 2.0f * (kSideMargin + kInset);
    const float lines = 2.0f * static_cast<float>(rows_.size());
    const float height = lines * kLineHeight + 2.0f * (kLineMargin + kInset);
    const gui::Rect at = target()->windowBounds();
    const gui::Rect room = ui().rootControl().content();
    const float x = std::round((at.left + at.right - width) / 2.0f);
    float y = std::round(at.top - kGap - height);
    if (y < 0.0f) y = std::round(at.bottom + kGap);
    const gui::Rect placed =
        gui::Rect::ofSize(std::clamp(x, 0.0f, std::max(room.right - width, 0.0f)),
                          std::clamp(y, 0.0f, std::max(room.bottom - height, 0.0f)), width, height);
    if (gui::isSame(placed, bounds.value())) return;
    bounds = placed;
    if (listener) listener->positionChanged();
}

gui::Rect ParameterValueDisplay::panel() const {
    const gui::Rect& all = localBounds();
    return {kInset, kInset, all.right - kInset, all.bottom - kInset};
}

gui::Rect ParameterValueDisplay::valueBounds(int row) const {
    const gui::Rect inside = panel();
    const float line = static_cast<float>(2 * row + 1);
    return gui::Rect::ofSize(inside.left, inside.top + kLineMargin + line * kLineHeight, inside.width(),
                             kLineHeight);
}

int ParameterValueDisplay::alphaAt(gui::Point point) {
    return panel().contains(point) ? 255 : 0;
}

void ParameterValueDisplay::paint(gui::Canvas& canvas) {
    canvas.drawStretched(*background_, localBounds(), background_->logicalRect());
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        const gui::Rect value = valueBounds(static_cast<int>(i));
        float top = value.top - kLineHeight;
        for (gui::Text* text : {rows_[i].name.get(), rows_[i].value.get()}) {
            const float x = value.left + (value.width() - text->width()) / 2.0f;
            canvas.drawText(*text, {x, top + gui::centredTop(*text, kLineHeight)});
            top += kLineHeight;
        }
    }
}

}  // namespace vanta::interface
