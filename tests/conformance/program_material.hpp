#pragma once

#include <array>
#include <string>
#include <vector>

#include "tests/support/limiter_rig.hpp"

/// What the ceiling is tested with, sorted by how hard it is to hold between the samples.
namespace vanta::test {

/// Where a signal has its energy decides how well its true peaks can be held: the limiter looks for peaks up
/// to 20 kHz, and what lies beyond, up to half the sample rate, it sees attenuated.
enum class Spectrum {
    Below16kHz,  ///< music, and tones that come and go softly
    LowNoise,    ///< noise below 16 kHz, dense throughout
    Below20kHz,  ///< tones near the edge of what is looked at
    Edges,       ///< tones that begin and end abruptly, squares, clicks: a little of everything
    PinkNoise,   ///< falls by 3 dB an octave, up to half the rate
    WhiteNoise,  ///< as strong beyond 20 kHz as anywhere
    Nyquist,     ///< tones and sweeps beyond 20 kHz
};
inline constexpr int kSpectra = 7;
inline constexpr std::array<const char*, kSpectra> kSpectrumNames = {
    "below 16 kHz", "noise below 16 kHz", "below 20 kHz", "edges",
    "pink noise",   "white noise",        "beyond 20 kHz"};

struct Material {
    std::string name;
    Spectrum spectrum;
    Channels channels;  ///< mono or stereo

    ChannelLayout layout() const { return channels.size() == 1 ? kMonoLayout : kStereoLayout; }
};

/// All of it, at 44.1 kHz, where the band beyond 20 kHz is widest for its neighbour's good.
const std::vector<Material>& programMaterial();

/// The loudest stretch of the demo song, at most 2 s, at 44.1 kHz in stereo, with its peaks just below full
/// scale.
Channels loudMusic(double seconds);

}  // namespace vanta::test
