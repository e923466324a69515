#pragma once

#include <filesystem>
#include <vector>

#include "tests/support/sound_files.hpp"

namespace vanta::test {

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
