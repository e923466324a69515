#include "tools/song/upmix.hpp"

#include "foundation/numbers.hpp"

namespace vanta::song {
namespace {

constexpr double kLfeHz = 120;
constexpr double kLeftDelayMs = 11;
constexpr double kRightDelayMs = 13;

/// Second-order Butterworth low-pass at any rate (Robert Bristow-Johnson's cookbook).
std::vector<float> lowPass(const std::vector<double>& in, double cutoffHz, double sampleRate) {
    const double angle = 2 * std::numbers::pi * cutoffHz / sampleRate;
    const double alpha = std::sin(angle) / std::numbers::sqrt2;
    const double a0 = 1 + alpha;
    const double b = 0.5 * (1 - std::cos(angle)) / a0;
    const double a1 = -2 * std::cos(angle) / a0;
    const double a2 = (1 - alpha) / a0;
    std::vector<float> out(in.size());
    double z1 = 0, z2 = 0;
    for (std::size_t i = 0; i < in.size(); ++i) {
        const double y = b * in[i] + z1;
        z1 = 2 * b * in[i] - a1 * y + z2;
        z2 = b * in[i] - a2 * y;
        out[i] = static_cast<float>(y);
    }
    return out;
}

}  // namespace

Surround upmixTo51(const Song& song) {
    const std::size_t frames = song.left.size();
    const auto leftDelay = static_cast<std::size_t>(samplesInMs(kLeftDelayMs, song.sampleRate));
    const auto rightDelay = static_cast<std::size_t>(samplesInMs(kRightDelayMs, song.sampleRate));
    std::vector<double> mid(frames);
    Surround out;
    for (auto& channel : out) channel.resize(frames);
    for (std::size_t i = 0; i < frames; ++i) {
        mid[i] = 0.5 * (static_cast<double>(song.left[i]) + static_cast<double>(song.right[i]));
        const auto shared = static_cast<float>(0.5 * mid[i]);
        out[0][i] = song.left[i] - shared;
        out[1][i] = song.right[i] - shared;
        out[2][i] = static_cast<float>(std::numbers::sqrt2) * shared;
        const float side = 0.5f * (song.left[i] - song.right[i]);
        if (i + leftDelay < frames) out[4][i + leftDelay] = side;
        if (i + rightDelay < frames) out[5][i + rightDelay] = -side;
    }
    out[3] = lowPass(mid, kLfeHz, song.sampleRate);
    return out;
}

}  // namespace vanta::song
