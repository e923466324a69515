#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "dsp/convolver/smoothing_shape.hpp"

namespace vanta::test {
namespace {

std::vector<double> normalized(const SmoothingShape& shape) {
    std::vector<double> taps;
    for (int i = 0; i < shape.length; ++i) taps.push_back(static_cast<double>(shape.tap(i)));
    const double sum = std::accumulate(taps.begin(), taps.end(), 0.0);
    for (double& tap : taps) tap /= sum;
    return taps;
}

// The forms at full smoothing are windows of the literature, of length + 2 points without the zeros at the
// ends.
TEST(SmoothingShape, HoldsTheKnownWindows) {
    using Shape = SmoothingShape;
    const int length = 99;
    const auto expectTaps = [&](int form, float power, float smoothing, auto&& window) {
        const Shape shape{length, form, 0.5f, power, smoothing};
        for (int i = 0; i < length; ++i)
            EXPECT_NEAR(shape.tap(i), window((i + 1.0) / (length + 1.0)), 1e-6) << form;
    };
    const auto hann = [](double t) { return 0.5 - 0.5 * std::cos(2.0 * M_PI * t); };
    const auto bartlett = [](double t) { return 1.0 - std::abs(2.0 * t - 1.0); };
    expectTaps(Shape::Sine, 0.0f, 1.0f, hann);
    expectTaps(Shape::Sine, 1.0f, 1.0f, [&](double t) { return std::pow(hann(t), 4.0); });
    expectTaps(Shape::Classic, 0.0f, 1.0f, bartlett);
    expectTaps(Shape::Classic, 0.0f, 0.5f, [&](double t) { return std::min(2.0 * bartlett(t), 0.5); });
    expectTaps(Shape::Triangle, 0.0f, 1.0f, [&](double t) { return bartlett(t) / 2; });
    expectTaps(Shape::Polynome, 0.0f, 1.0f, [](double t) { return 1.0 - (2.0 * t - 1.0) * (2.0 * t - 1.0); });
    for (const double tap : normalized({length, Shape::Classic, 0.5f, 1.0f, 0.0f})) {
        EXPECT_NEAR(tap, 1.0 / length, 1e-9);
    }
}

TEST(SmoothingShape, MovesItsWeightWithTheOffset) {
    const int length = 500;
    const auto peakAt = [&](float offset) {
        const auto taps = normalized({length, SmoothingShape::Sine, offset, 0.0f, 1.0f});
        return std::max_element(taps.begin(), taps.end()) - taps.begin();
    };
    EXPECT_NEAR(static_cast<double>(peakAt(0.5f)), 249.5, 1.0);
    EXPECT_NEAR(static_cast<double>(peakAt(0.2f)), 0.8 * length, 2.0);
    // At the ends the form is only half there: it rises to the last tap, or falls from the first.
    EXPECT_EQ(peakAt(0.0f), length - 1);
    EXPECT_EQ(peakAt(1.0f), 0);
}

}  // namespace
}  // namespace vanta::test
