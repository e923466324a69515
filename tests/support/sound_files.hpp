#pragma once

#include <span>
#include <vector>

#include "tests/support/signals.hpp"
#include "tests/support/temp_folder.hpp"

/// Audio files made and read by libsndfile alone, so that what is tested takes no part in judging itself.
namespace vanta::test {

using Channels = std::vector<Signal>;  ///< in file order

/// `speakers`: libsndfile's numbers, or empty.
void writeSound(const std::filesystem::path& path, const Channels& channels, int format, int sampleRate,
                std::span<const int> speakers = {});

struct Sound {
    Channels channels;
    int format = 0;
    int sampleRate = 0;
    std::vector<int> speakers;  ///< empty if the file names none
};
Sound readSound(const std::filesystem::path& path);
/// The samples of an integer file, as integers of 32 bits with the file's bits on top, interleaved.
std::vector<int> readIntegers(const std::filesystem::path& path);

/// What libebur128 finds in sounds, taken together. Six channels stand in the order of WAV files.
struct SecondOpinion {
    double integrated;  ///< LUFS
    double range;       ///< LU
    double momentary;   ///< LUFS, the highest
    double shortTerm;   ///< LUFS, the highest
    double truePeak;    ///< dBTP, the highest
};
SecondOpinion secondOpinion(const std::vector<Sound>& sounds);
SecondOpinion secondOpinion(const std::vector<std::filesystem::path>& files);

}  // namespace vanta::test
