#pragma once

#include "wave/aligned_buffer.hpp"

namespace vanta {

/// One partition of input: half the window of a transform. While all its samples are equal they are not
/// written, so that a signal at rest costs nothing.
class InputHalf {
public:
    explicit InputHalf(int samples) : samples_(samples) {}

    /// Takes samples from place `phase` on; places are filled in order from 0.
    void take(int phase, const float* in, int count, bool allEqual);
    /// Counts as holding `value` throughout.
    void setConstant(float value);
    /// The samples, written if they were not.
    const float* data();

    bool constant() const { return constant_; }
    float value() const { return value_; }

private:
    void writeValue(int count);

    wave::AlignedBuffer<float> samples_;
    float value_ = 0.0f;
    bool constant_ = true;
    bool written_ = false;
};

}  // namespace vanta
