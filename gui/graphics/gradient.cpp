#include "gui/graphics/gradient.hpp"

#include <algorithm>
#include <cmath>

namespace vanta::gui {
namespace {

Color mix(Color from, Color to, float amount) {
    const auto channel = [&](std::uint8_t a, std::uint8_t b) {
        const float low = a;
        return static_cast<std::uint8_t>(std::lround(low + (static_cast<float>(b) - low) * amount));
    };
    return {channel(from.red, to.red), channel(from.green, to.green), channel(from.blue, to.blue),
            channel(from.alpha, to.alpha)};
}

}  // namespace

Gradient::Gradient(std::vector<Stop> stops) : stops_(std::move(stops)) {}

Gradient::Gradient(Color first, Color last) : stops_{{first, 0.0f}, {last, 1.0f}} {}

Gradient::Gradient(Color first, Color middle, float middlePosition, Color last)
    : stops_{{first, 0.0f}, {middle, middlePosition}, {last, 1.0f}} {}

bool Gradient::brackets(std::size_t stop, float position) const {
    return stop + 1 < stops_.size() && position >= stops_[stop].position &&
           position < stops_[stop + 1].position;
}

Color Gradient::at(float position) const {
    if (stops_.empty()) return {};
    if (!(position >= stops_.front().position)) return stops_.front().color;
    if (position >= stops_.back().position) return stops_.back().color;
    if (!brackets(cursor_, position)) {
        const auto after = std::upper_bound(stops_.begin(), stops_.end(), position,
                                            [](float p, const Stop& stop) { return p < stop.position; });
        cursor_ = static_cast<std::size_t>(after - stops_.begin()) - 1;
    }
    const Stop& from = stops_[cursor_];
    const Stop& to = stops_[cursor_ + 1];
    return mix(from.color, to.color, (position - from.position) / (to.position - from.position));
}

Gradient Gradient::scaled(int alpha) const {
    Gradient result = *this;
    for (Stop& stop : result.stops_) stop.color = stop.color.withAlpha(alpha);
    return result;
}

}  // namespace vanta::gui
