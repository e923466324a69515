#include "interface/loudness/loudness_meter_display.hpp"

#include <array>

#include "gui/graphics/canvas.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::interface {
namespace {

constexpr std::array<int, 4> kPositions{0, 32, 40, 48};
constexpr int kOrders[3][3] = {{0, 1, 2}, {1, 0, 2}, {2, 0, 1}};
constexpr gui::Color kTargetColor{255, 255, 255, 217};

}  // namespace

int LoudnessMeterDisplay::barPosition(int bar) const {
    return kPositions[static_cast<std::size_t>(bar)];
}

int LoudnessMeterDisplay::channelOrder(int bar) const {
    return kOrders[chosen][bar];
}

void LoudnessMeterDisplay::propertyChanged(AbstractProperty& property) {
    LevelMeterDisplay::propertyChanged(property);
    if (&property == &chosen || &property == &target) markDirty();
}

void LoudnessMeterDisplay::paint(gui::Canvas& canvas) {
    LevelMeterDisplay::paint(canvas);
    const float scaleOfDevice = ui().deviceBacking().scale();
    const float line =
        static_cast<float>(gui::toDevice(levelToPosition(target), scaleOfDevice)) / scaleOfDevice;
    const float end = line + 1.0f / scaleOfDevice;
    canvas.fillRect(
        isVertical() ? gui::Rect{0.0f, line, breadth(), end} : gui::Rect{line, 0.0f, end, breadth()},
        kTargetColor);
}

}  // namespace vanta::interface
