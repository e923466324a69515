#pragma once

namespace vanta {

/// The form of a smoothing kernel, before it is scaled to a sum of 1.
struct SmoothingShape {
    enum Form { Triangle, Polynome, Sine, Classic };

    int length = 1;          ///< taps, at least 1
    int form = Triangle;     ///< a Form
    float offset = 0.5f;     ///< 0 to 1: where the kernel's weight lies; 0.5 is centred
    float power = 0.0f;      ///< 0 to 1: how much the slopes are bent
    float smoothing = 0.0f;  ///< 0 to 1: from flat to the full form

    /// Tap `i`, 0 to `length` - 1; never negative.
    float tap(int i) const;
};

}  // namespace vanta
