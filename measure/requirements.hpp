#pragma once

#include <optional>

#include "measure/programme.hpp"

namespace vanta {

/// What the figures of a programme should be.
struct Requirements {
    std::optional<double> targetLufs;
    double toleranceLu = 0.5;
    std::optional<double> maxTruePeakDb;

    /// A programme without a reading misses a target.
    bool missesTarget(const ProgrammeFigures& figures) const;
    bool missesTruePeak(const ProgrammeFigures& figures) const;
    bool misses(const ProgrammeFigures& figures) const {
        return missesTarget(figures) || missesTruePeak(figures);
    }
};

}  // namespace vanta
