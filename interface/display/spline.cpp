#include "interface/display/spline.hpp"

namespace vanta::interface {
namespace {

struct ControlPoint {
    float x, y;
};
constexpr ControlPoint kFirst{0.7f, 0.06f};
constexpr ControlPoint kSecond{0.6f, 0.92f};
constexpr float kTolerance = 0.0001f;

}  // namespace

Spline::Polynomial::Polynomial(float first, float second)
    : cube(1.0f + 3.0f * (first - second)), square(3.0f * (second - 2.0f * first)), linear(3.0f * first) {}

Spline::Spline() : x_(kFirst.x, kSecond.x), y_(kFirst.y, kSecond.y) {}

float Spline::valueAt(float x) const {
    if (x <= 0.0f) return x * kFirst.y / kFirst.x;
    if (x >= 1.0f) return 1.0f + (x - 1.0f) * (1.0f - kSecond.y) / (1.0f - kSecond.x);
    float low = 0.0f;
    float high = 1.0f;
    while (y_.at(high) - y_.at(low) > kTolerance) {
        const float middle = (low + high) * 0.5f;
        (x_.at(middle) <= x ? low : high) = middle;
    }
    return y_.at(low);
}

}  // namespace vanta::interface
