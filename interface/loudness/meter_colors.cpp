#include "interface/loudness/meter_colors.hpp"

#include <algorithm>
#include <vector>

#include "gui/tree/user_interface.hpp"

namespace vanta::interface {
namespace {

constexpr gui::Color kLoudTop{172, 42, 51, 255};
constexpr gui::Color kLoudEnd{202, 86, 106, 255};
constexpr gui::Color kAmber{247, 183, 83, 255};
constexpr gui::Color kPale{255, 235, 201, 255};

}  // namespace

BarColors barColors(bool unityGain) {
    if (unityGain) return {{247, 183, 83, 255}, {207, 186, 152, 255}};
    return {{185, 197, 232, 255}, {99, 107, 136, 255}};
}

BarColors reductionColors() {
    return {{219, 67, 85, 255}, {138, 41, 55, 255}};
}

BandLimits bandsOfReference(float k) {
    return {4.0f - k, -k, -k};
}

BandLimits bandsOfTarget(float target, float reach) {
    return {target, target - 2.0f * reach / 3.0f, target - 4.0f * reach / 3.0f};
}

gui::Gradient bandGradient(const LevelMeterDisplay& meter, const BandLimits& limits, const BarColors& below) {
    const auto place = [&](float level) { return meter.fractionOf(meter.levelToPosition(level)); };
    const float a = place(limits[0]), b = place(limits[1]), c = place(limits[2]);
    const float pixel = 1.0f / meter.ui().deviceBacking().scale();
    const float gap = std::abs(meter.fractionOf(pixel) - meter.fractionOf(0.0f));
    std::vector<gui::Gradient::Stop> stops;
    // Only what lies beyond the scale is before its start.
    if (a != 0.0f) stops.push_back({kClipColor, 0.0f});
    if (a > 0.0f) {
        stops.push_back({kLoudTop, 0.0f});
        stops.push_back({kLoudEnd, std::max(a - gap, 0.0f)});
    }
    if (b > 0.0f) stops.push_back({kAmber, a});
    if (c > 0.0f) stops.push_back({kPale, b});
    stops.push_back({below.top, c});
    if (c < 1.0f) stops.push_back({below.bottom, 1.0f});
    return gui::Gradient(std::move(stops));
}

}  // namespace vanta::interface
