#include "measure/requirements.hpp"

#include <cmath>

namespace vanta {

namespace {

/// Figures are printed with two decimals, and compared with as many.
constexpr double kHalfDigit = 0.005;

}  // namespace

bool Requirements::missesTarget(const ProgrammeFigures& figures) const {
    if (!targetLufs) return false;
    return !figures.integrated || std::abs(*figures.integrated - *targetLufs) > toleranceLu + kHalfDigit;
}

bool Requirements::missesTruePeak(const ProgrammeFigures& figures) const {
    if (!maxTruePeakDb || !figures.total.truePeak) return false;
    return figures.total.truePeak->level > *maxTruePeakDb + kHalfDigit;
}

}  // namespace vanta
