#include "gui/controls/value_drag_mapper.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "gui/controls/modifier_map.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {
namespace {

/// From here on steps are a continuum.
constexpr int kManySteps = 100;
constexpr float kLeastPixelsPerStep = 20.0f;
/// Pixels a millisecond at and above which a drag is not slowed down.
constexpr float kFullSpeed = 0.1f;
/// Moves come once a frame; closer ones would look faster than they are.
constexpr float kLeastMoveMs = 20.0f;
constexpr float kStepsPerWheelPixel = 1.0f / 25.0f;
/// Of a step, that fractions may lack when they add up.
constexpr float kRounding = 1e-4f;

bool isFine(int modifiers) {
    return ModifierMap::shared().behaviour(modifiers) & ModifierMap::kFine;
}

}  // namespace

ValueDragMapper::ValueDragMapper(const UserInterface& ui) : clock_(ui.createClock()) {}

void ValueDragMapper::startDrag(Point point) {
    clock_->reset();
    carry_ = wheelCarry_ = 0.0f;
    press_ = last_ = point;
    pressPending_ = true;
}

bool ValueDragMapper::mayBeDoubleClick(const Control& control, Point point) {
    if (!pressPending_) return false;
    const Point travel = point - press_;
    pressPending_ = control.doubleClickable && std::abs(travel.x) <= UserInterface::kDoubleClickDistance &&
                    std::abs(travel.y) <= UserInterface::kDoubleClickDistance &&
                    clock_->elapsed() <= UserInterface::kDoubleClickMs;
    return pressPending_;
}

int ValueDragMapper::drag(const Control& control, Point point, int modifiers) {
    const Point travel = point - std::exchange(last_, point);
    if (mayBeDoubleClick(control, point)) return 0;
    float pixels = direction == Direction::Up ? -travel.y : travel.x;
    if (isFine(modifiers)) {
        pixels *= fineFactor;
    } else if (accelerated && steps >= kManySteps) {
        pixels = accelerate(pixels);
    }
    const auto range = static_cast<float>(steps.value());
    const float length = std::max(std::min(kLeastPixelsPerStep * range, dragLength.value()), 1.0f);
    return takeWhole(range * pixels / length + carry_, carry_);
}

float ValueDragMapper::accelerate(float pixels) {
    const float elapsed = std::max(static_cast<float>(clock_->elapsed()), kLeastMoveMs);
    clock_->reset();
    const float speed = std::min(std::abs(pixels) / elapsed, kFullSpeed);
    return pixels * (fineFactor + speed / kFullSpeed * (1.0f - fineFactor));
}

int ValueDragMapper::takeWhole(float exact, float& carry) {
    // Five strokes of a fifth are a step, whatever their sum is in binary.
    const float whole = std::trunc(exact + std::copysign(kRounding, exact));
    carry = exact - whole;
    return static_cast<int>(whole);
}

int ValueDragMapper::wheel(Control::WheelPhase phase, int modifiers, float amount, float pixels) {
    if (phase == Control::WheelPhase::Begin) {
        clock_->reset();
        pressPending_ = false;
        carry_ = wheelCarry_ = 0.0f;
        wheelDirection_ = 0;
    }
    if (phase != Control::WheelPhase::Move) return 0;
    const float exactMove = steps < kManySteps ? pixels * kStepsPerWheelPixel
                                               : static_cast<float>(steps.value()) * amount *
                                                     (isFine(modifiers) ? fineFactor : 1.0f);
    float exact = exactMove + wheelCarry_;
    const int turned = (amount > 0.0f) - (amount < 0.0f);
    if (turned != 0 && turned != wheelDirection_) {
        // The first click in a direction is felt, whatever is left of the other one.
        exact = turned > 0 ? std::max(exact, 1.0f) : std::min(exact, -1.0f);
        wheelDirection_ = turned;
    }
    return takeWhole(exact, wheelCarry_);
}

}  // namespace vanta::gui
