#pragma once

#include <cstdint>

namespace vanta::interface {

/// Tells how many columns of a scrolling picture come with each frame, however long frames take: a whole
/// number that stays the same from frame to frame, or one column every n frames. The picture then moves
/// evenly, at the whole number next to the speed that was asked for; what it really comes to is `pixelRate`.
class ScrollClock {
public:
    /// A frame has come, `elapsedMs` after the last one. `rate` is the speed that is wanted, in pixels a
    /// second, and `width`, above 0, that of the picture. A pixel is a logical unit.
    void tick(std::int64_t elapsedMs, float rate, float width);

    /// Columns of this frame.
    int columns() const { return position_ == 0.0f ? 1 : static_cast<int>(position_); }
    /// Pixels that a frame advances: a whole number, or 1/n.
    float step() const { return step_; }
    /// Where the picture stands between two columns, below 1, if a frame advances less than one; else the
    /// step. 0 with the frame that brings a column.
    float position() const { return position_; }
    /// Measured, in pixels a second.
    float pixelRate() const { return pixelRate_; }
    /// The length of a frame, in pixels: smoothed, as they ought to be.
    float frameWidth() const { return frameWidth_; }
    /// The length of a frame in milliseconds at that rate, at least 5.
    float frameMs(float rate) const;

private:
    void chooseStep();

    float frameWidth_ = 2.0f;
    float step_ = 0.0f;
    float position_ = 0.0f;
    float pixelRate_ = 0.0f;  ///< 0: not known yet
};

}  // namespace vanta::interface
