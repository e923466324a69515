#pragma once

#include <filesystem>
#include <vector>

namespace vanta::test {

/// What libebur128 finds in files of one or two channels, taken together.
struct SecondOpinion {
    double integrated;  ///< LUFS
    double range;       ///< LU
    double momentary;   ///< LUFS, the highest
    double shortTerm;   ///< LUFS, the highest
    double truePeak;    ///< dBTP, the highest
};
SecondOpinion secondOpinion(const std::vector<std::filesystem::path>& files);

}  // namespace vanta::test
