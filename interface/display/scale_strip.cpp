#include "interface/display/scale_strip.hpp"

#include "gui/controls/shape.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::interface {
namespace {

constexpr gui::Color kClear{8, 9, 12, 0};
constexpr gui::Color kHalf{8, 9, 12, 128};
constexpr gui::Color kDark{8, 9, 12, 168};
constexpr float kTopBar = 41.0f;
constexpr float kBottomBar = 27.0f;

}  // namespace

ScaleStrip::ScaleStrip(gui::Control& parent, LimiterDisplay& display) {
    auto& glass = parent.ui().make<gui::Shape>();
    glass.gradient = gui::Gradient(kClear, kHalf, 0.3f, kDark);
    glass.direction = gui::Shape::Direction::Right;
    glass.parent = &parent;
    glass_ = &glass;
    numbers_ = &parent.ui().make<DisplayGridControl>();
    numbers_->parent = &parent;
    DisplayGrid& grid = numbers_->grid();
    grid.setDisplay(&display);
    grid.margins = display.grid().margins.value();
    grid.format = display.grid().format.value();
    grid.minimumSpacing = display.grid().minimumSpacing.value();
    grid.labelColor = display.grid().labelColor.value();
    grid.labelAlignment = gui::Alignment::Right;
    grid.labelInset = 4.0f;
    grid.showLines = false;
    display.grid().showLabels = false;
}

void ScaleStrip::place(float right, float height) {
    const float left = right - kWidth;
    glass_->setBounds({left, kTopBar, right, std::max(height - kBottomBar, kTopBar)});
    numbers_->setBounds({left, 0.0f, right, height});
}

void ScaleStrip::keepClear(const std::vector<gui::Rect>& areas) {
    const gui::Point origin = numbers_->bounds.value().origin();
    std::vector<gui::Rect> own;
    for (const gui::Rect& area : areas) own.push_back(area.translated({-origin.x, -origin.y}));
    grid().exclusions = own;
}

}  // namespace vanta::interface
