#pragma once

#include <string>
#include <vector>

#include "tools/song/score.hpp"

namespace vanta::song {

/// Where a section lies in the rendered song; the last one ends before the tail.
struct SectionFrames {
    std::string name;
    std::size_t first = 0;
    std::size_t end = 0;
};

struct Song {
    double sampleRate = 0;
    std::vector<float> left, right;
    std::vector<SectionFrames> sections;
};

/// Plays a score at any rate from 8 to 384 kHz, at most `seconds` of it. The same score gives the same
/// samples in each run, and the same music at each rate: up to 0.9 of the lower Nyquist frequency two
/// renders differ by less than -90 dB. Throws std::invalid_argument for a rate or length out of range.
Song renderSong(const Score& score, double sampleRate, double seconds = 1e9);

/// The piece that the demonstration masters: resources/demo/song.score.
Score loadDemoScore();

}  // namespace vanta::song
