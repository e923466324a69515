#pragma once

#include <span>

namespace vanta::interface {

/// For how long a curve has not moved, so that a picture of nothing but flat lines need not be painted.
class FlatRun {
public:
    static constexpr int kMost = 100000;

    struct Limits {
        float low = 0.0f;
        float high = 0.0f;
    };

    /// Flat for as long as anyone asks, at a position.
    void reset(float position, Limits limits);
    /// New columns, at least one. What lies beyond the limits is off the picture and counts as flat.
    void extend(std::span<const float> positions, Limits limits);
    int columns() const { return columns_; }

private:
    int columns_ = kMost;
    float position_ = 0.0f;
};

}  // namespace vanta::interface
