#pragma once

#include <array>

#include "gui/graphics/curve.hpp"

namespace vanta::gui {

/// Walks along a curve column by column, in device pixels, with the values around the column in a window as
/// wide as the line. It tells how far a line of its width has to reach above and below its middle to join
/// what lies beside it: a steep stretch gives a tall column.
class CurveStepper {
public:
    /// Before the column `startColumn` of the curve, whose zero lies at `yOffset` device pixels. Widths are
    /// logical.
    void begin(const Curve& curve, float lineWidth, int glowWidth, int startColumn, float yOffset,
               float scale);

    struct Step {
        float middle;  ///< the curve, in device pixels
        float up;
        float down;
    };
    /// The next column.
    Step next();

    float lineExtent() const { return lineExtent_; }  ///< device pixels
    float glowExtent() const { return glowExtent_; }  ///< device pixels

private:
    static constexpr int kRing = 127;
    static constexpr int kLargestWindow = 105;
    /// From this window on running sums are quicker than going through it at each column.
    static constexpr int kWide = 20;

    float sample(int column) const;
    void advance();
    float delta(int fromMiddle) const { return deltas_[index(middle_ + fromMiddle)]; }
    static std::size_t index(int i) { return static_cast<std::size_t>(i); }
    float reach(int first, int direction) const;
    float wideReach(double sum, int last) const;

    const Curve* curve_ = nullptr;
    float scale_ = 1.0f;
    float inverseScale_ = 1.0f;
    float yOffset_ = 0.0f;
    float lineExtent_ = 0.0f;
    float glowExtent_ = 0.0f;
    int half_ = 1;    ///< columns on each side of the middle
    int column_ = 0;  ///< of the middle
    int middle_ = 0;  ///< its place in the ring
    /// Values, and their distances from the ones before.
    std::array<float, kRing> values_{};
    std::array<float, kRing> deltas_{};
    /// Of the deltas, by their distance from the middle. They add up to 1 over half the line.
    std::array<float, kLargestWindow / 2> weights_{};
    /// Of the deltas of each side, but for the outermost. In double precision, since they run along.
    double leftSum_ = 0.0;
    double rightSum_ = 0.0;
};

}  // namespace vanta::gui
