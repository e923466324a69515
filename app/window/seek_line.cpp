#include "app/window/seek_line.hpp"

#include <algorithm>
#include <cmath>

#include "gui/graphics/canvas.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta {
namespace {

constexpr float kThickness = 4.0f;
constexpr gui::Color kGroove{6, 7, 9, 255};
constexpr gui::Color kLip{255, 255, 255, 18};
constexpr gui::Color kPlayed{131, 152, 238, 255};
constexpr gui::Color kPen{213, 222, 255, 255};

}  // namespace

float SeekLine::playedWidth(double place) {
    const float scale = ui().deviceBacking().scale();
    return std::round(static_cast<float>(place) * localBounds().width() * scale) / scale;
}

void SeekLine::show(double place) {
    const double limited = std::clamp(place, 0.0, 1.0);
    if (playedWidth(limited) != playedWidth(place_)) markDirty();
    place_ = limited;
}

void SeekLine::seek(gui::Point point) {
    show(static_cast<double>(point.x) / static_cast<double>(std::max(localBounds().width(), 1.0f)));
    if (onSeek) onSeek(place_);
}

void SeekLine::mouseDown(int button, gui::Point point, int modifiers) {
    Control::mouseDown(button, point, modifiers);
    if (button != gui::kLeftPress) return;
    held_ = true;
    seek(point);
}

void SeekLine::mouseMove(gui::Point point, int modifiers) {
    Control::mouseMove(point, modifiers);
    if (held_) seek(point);
}

void SeekLine::mouseUp(int button, gui::Point point, int modifiers) {
    if (button == gui::kLeftPress) held_ = false;
    Control::mouseUp(button, point, modifiers);
}

void SeekLine::paint(gui::Canvas& canvas) {
    const gui::Rect& all = localBounds();
    const float top = std::floor((all.height() - kThickness) / 2.0f);
    const float played = playedWidth(place_);
    canvas.fillRect({0.0f, top, all.right, top + kThickness}, kGroove);
    canvas.fillRect({0.0f, top + kThickness, all.right, top + kThickness + 1.0f}, kLip);
    canvas.fillRect({0.0f, top, played, top + kThickness}, kPlayed);
    canvas.fillRect({std::max(played - 1.0f, 0.0f), top - 4.0f, played + 1.0f, top + kThickness + 4.0f},
                    kPen);
}

}  // namespace vanta
