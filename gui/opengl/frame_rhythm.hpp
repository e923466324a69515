#pragma once

namespace vanta::gui {

/// When a render thread draws: every so many refreshes of the display, or by the clock where those are
/// unknown. Milliseconds.
struct FrameRhythm {
    double periodMs;  ///< of a round
    int skip;         ///< rounds between two that draw

    /// `refreshMs` 0: unknown.
    static FrameRhythm of(int framesPerSecond, double refreshMs);

    /// How long to wait after a round whose work has taken this long.
    int waitAfter(double workMs) const;
};

}  // namespace vanta::gui
