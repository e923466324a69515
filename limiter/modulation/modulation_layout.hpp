#pragma once

#include <vector>

#include "limiter/styles/target_range.hpp"

namespace vanta {

/// What the matrix knows of a source.
struct SourceInfo {
    int type = 0;
    std::vector<int> inputs;  ///< targets that its element reads; empty for inputs and main controls
    int control = -1;         ///< the target whose value a main control hands out
};

/// The fixed shape of a modulation matrix. Targets that are slot levels follow the others.
struct ModulationLayout {
    int targetCount() const { return elementTargetCount + slotCount; }

    /// Every input takes what is not finite for silence, and limits magnitudes to kernel::kLargestSample.
    bool limitsSignals = false;
    int elementTargetCount = 0;
    int slotCount = 0;
    std::vector<SourceInfo> sources;
    std::vector<TargetRange> ranges;
    std::vector<int> rangeOf;  ///< one per target: position in `ranges`, or -1
};

}  // namespace vanta
