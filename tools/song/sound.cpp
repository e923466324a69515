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
    // The exponential is lowered until it ends at 0.
    const double floor = std::exp(-kReleases);
    return level * std::fmax(0, (std::exp((gate - time) / release) - floor) / (1 - floor));
}

std::size_t frameAt(double seconds) {
    return static_cast<std::size_t>(std::llround(seconds * kStudioRate));
}

}  // namespace vanta::song
