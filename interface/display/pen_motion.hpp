#pragma once

#include "interface/display/spline.hpp"

namespace vanta::interface {

/// Where the newest column of the picture is drawn. The pen stands at the right edge, or drifts there: the
/// picture then moves the slower, and whenever the pen has arrived it jumps back, softly, and takes the
/// picture along.
class PenMotion {
public:
    struct Frame {
        float step = 0.0f;     ///< pixels that the frame advances
        float drift = 0.0f;    ///< pixels of the pen for each of them
        float width = 0.0f;    ///< of the picture, in pixels
        float frameMs = 5.0f;  ///< how long frames are
    };

    /// To the right edge, as when nothing has been drawn yet.
    void reset(float width);
    /// To the right edge, where nothing moves.
    void rest(float width);
    /// The result is true if the pen has left its rest by jumping back at once.
    bool advance(const Frame& frame);

    float position() const { return pen_; }
    bool isAtEdge(float width) const { return pen_ > width - 0.1f; }

private:
    enum class State { Fresh, Resting, Running };

    bool jumpBack(const Frame& frame);

    Spline ease_;
    float pen_ = 0.0f;
    float lastEase_ = 1.0f;
    int easeFrames_ = 1;  ///< length of a jump
    int easeCount_ = 1;   ///< of which so many have passed
    State state_ = State::Fresh;
};

}  // namespace vanta::interface
