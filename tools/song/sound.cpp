#include "tools/song/sound.hpp"

namespace vanta::song {

double fadeIn(double time, double length) {
    if (time >= length) return 1;
    return 0.5 - 0.5 * std::cos(std::numbers::pi * time / length);
}

double Envelope::at(double time, double gate) const {
    const double held = std::fmin(time, gate);
    double level = fadeIn(held, attack);
    if (held > attack) level = sustain + (1 - sustain) * std::exp((attack - held) / decay);
    if (time <= gate) return level;
    // Falls as a critically damped system does: from rest, so that the release has no corner. The last
    // decibels are taken off so that it ends at 0.
    const auto damped = [](double x) { return (1 + x) * std::exp(-x); };
    const double floor = damped(kReleases);
    return level * std::fmax(0, (damped((time - gate) / release) - floor) / (1 - floor));
}

std::size_t frameAt(double seconds) {
    return static_cast<std::size_t>(std::llround(seconds * kStudioRate));
}

}  // namespace vanta::song
