#include "gui/graphics/curve_stepper.hpp"

#include <algorithm>
#include <cmath>

namespace vanta::gui {
namespace {

/// Far beyond any display, and near enough for sums of it to stay precise.
constexpr float kFarAway = 100000.0f;

}  // namespace

void CurveStepper::begin(const Curve& curve, float lineWidth, int glowWidth, int startColumn, float yOffset,
                         float scale) {
    curve_ = &curve;
    scale_ = scale;
    inverseScale_ = 1.0f / scale;
    yOffset_ = yOffset;
    lineExtent_ = scale * lineWidth;
    glowExtent_ = scale * static_cast<float>(glowWidth);

    const float extent = std::clamp(lineExtent_ + glowExtent_, 0.0f, 2.0f * kLargestWindow);
    const int window = 2 * static_cast<int>(extent * 0.5f + 0.495f) + 3;
    half_ = std::min(window, kLargestWindow) / 2;
    const float halfExtent = std::max((extent + 1.0f) * 0.5f, 1.0f);
    for (int i = 0; i < half_; ++i) {
        weights_[index(i)] = std::clamp(halfExtent - static_cast<float>(i), 0.0f, 1.0f) / halfExtent;
    }

    // The window stands around the column before the first one.
    column_ = startColumn - 1;
    middle_ = half_;
    values_[0] = sample(column_ - half_);
    deltas_[0] = 0.0f;
    for (int i = 1; i <= 2 * half_; ++i) {
        values_[index(i)] = sample(column_ - half_ + i);
        deltas_[index(i)] = values_[index(i)] - values_[index(i - 1)];
    }
    leftSum_ = rightSum_ = 0.0;
    for (int i = 0; i + 1 < half_; ++i) {
        leftSum_ += delta(-i);
        rightSum_ += delta(1 + i);
    }
}

float CurveStepper::sample(int column) const {
    const float y = curve_->valueAt(static_cast<float>(column) * inverseScale_) * scale_ + yOffset_;
    if (!(y > -kFarAway)) return -kFarAway;
    return y < kFarAway ? y : kFarAway;
}

void CurveStepper::advance() {
    if (middle_ + half_ + 1 == kRing) {
        const auto window = static_cast<std::ptrdiff_t>(2 * half_ + 1);
        std::copy(values_.end() - window, values_.end(), values_.begin());
        std::copy(deltas_.end() - window, deltas_.end(), deltas_.begin());
        middle_ = half_;
    }
    ++middle_;
    ++column_;
    const std::size_t newest = index(middle_ + half_);
    values_[newest] = sample(column_ + half_);
    deltas_[newest] = values_[newest] - values_[newest - 1];
}

/// The weighted mean of the deltas to one side. One that points back counts only if it outweighs what lies
/// between: small wiggles do not shorten a line's reach.
float CurveStepper::reach(int first, int direction) const {
    float sum = delta(first) * weights_[0];
    for (int i = 1; i < half_; ++i) {
        const float weighted = delta(first + direction * i) * weights_[index(i)];
        if (weighted * sum < 0.0f && std::abs(weighted) < std::abs(sum)) continue;
        sum += weighted;
    }
    return sum;
}

float CurveStepper::wideReach(double sum, int last) const {
    return static_cast<float>(sum * weights_[0] + delta(last) * weights_[index(half_ - 1)]);
}

CurveStepper::Step CurveStepper::next() {
    advance();
    float left, right;
    if (2 * half_ + 1 <= kWide) {
        left = reach(0, -1);
        right = reach(1, 1);
    } else {
        // What was the outermost but one to the right entered its sum, and so on towards the left.
        leftSum_ += static_cast<double>(delta(0)) - delta(1 - half_);
        rightSum_ += static_cast<double>(delta(half_ - 1)) - delta(0);
        left = wideReach(leftSum_, 1 - half_);
        right = wideReach(rightSum_, half_);
    }
    Step step{values_[index(middle_)], std::max(left, 0.0f), std::max(-left, 0.0f)};
    if (right > 0.0f) {
        step.down = std::max(step.down, right);
    } else {
        step.up = std::max(step.up, -right);
    }
    return step;
}

}  // namespace vanta::gui
