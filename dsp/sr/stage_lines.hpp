#pragma once

#include <array>

#include "wave/aligned_buffer.hpp"

namespace vanta::sr {

/// A stretch of samples with room in front of it, where a filter puts what came before.
class StageLine {
public:
    explicit StageLine(float* input) : input_(input) {}
    float* input() const { return input_; }

private:
    float* input_;
};

/// Where the stages of a cascade compute, one after the other: each writes its output to where the next one
/// reads it. All channels take turns on the same lines, which stay in the nearest cache; a stage keeps for
/// itself only the past that its filter reaches.
class StageLines {
public:
    /// For inputs of up to `samples`, with room for `past` samples in front of each. Allocates.
    void resize(int past, int samples);

    /// Neighbouring stages take lines of different parity.
    StageLine line(std::size_t stage) { return StageLine(lines_[stage % lines_.size()].data() + front_); }
    float* scratch() { return scratch_.data(); }

private:
    std::array<wave::AlignedBuffer<float>, 2> lines_;
    wave::AlignedBuffer<float> scratch_;  ///< of decimators
    int front_ = 0;
};

}  // namespace vanta::sr
