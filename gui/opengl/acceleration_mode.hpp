#pragma once

namespace vanta::gui {

/// Whether and how OpenGL draws the window, as the setting "GraphicsAccelerationMode" has it: 0 for not at
/// all; else by the lower four bits 2 for 30 frames a second at most, 3 for 20, all others for 60. The bit
/// 0x10 takes drivers that are refused otherwise: those known to be broken, and those that draw in software,
/// which our own does faster.
class AccelerationMode {
public:
    static constexpr int kDefault = 1;
    static constexpr int kForced = 0x10;

    constexpr explicit AccelerationMode(int value) : value_(value) {}

    constexpr bool isOff() const { return value_ == 0; }
    constexpr bool isForced() const { return (value_ & kForced) != 0; }
    constexpr int framesPerSecond() const {
        const int rate = value_ & 0xF;
        return rate == 2 ? 30 : rate == 3 ? 20 : 60;
    }

private:
    int value_;
};

}  // namespace vanta::gui
