#pragma once

#include <memory>

#include "foundation/interval_timer.hpp"
#include "foundation/property.hpp"
#include "gui/tree/control.hpp"

namespace vanta::gui {

/// Turns movements of the pointer and the wheel into steps of a value.
class ValueDragMapper {
public:
    enum class Direction { Up, Right };  ///< in which the value grows

    explicit ValueDragMapper(const UserInterface& ui);

    /// Slow drags go in smaller steps.
    Property<bool> accelerated{nullptr, true};
    Property<float> fineFactor{nullptr, 0.1f};
    /// Pixels that traverse the whole range.
    Property<float> dragLength{nullptr, 200.0f};
    /// Of the whole range.
    Property<int> steps{nullptr, 4096};
    Direction direction = Direction::Up;

    void startDrag(Point point);
    /// Steps since the last call. None while the press may still become a double click.
    int drag(const Control& control, Point point, int modifiers);
    /// `amount` is a share of the range, `pixels` are 25 a click; values of few steps go by the pixels.
    int wheel(Control::WheelPhase phase, int modifiers, float amount, float pixels);

private:
    bool mayBeDoubleClick(const Control& control, Point point);
    float accelerate(float pixels);
    static int takeWhole(float exact, float& carry);

    float carry_ = 0.0f;  ///< of a step, kept for the next call
    std::unique_ptr<IntervalTimer> clock_;
    bool pressPending_ = false;
    Point press_;
    Point last_;
    int wheelDirection_ = 0;
    float wheelCarry_ = 0.0f;
};

}  // namespace vanta::gui
