#pragma once

#include <utility>
#include <vector>

namespace vanta {

/// How a target takes sources of each type, and what its value is limited to.
struct TargetRange {
    float factorFor(int sourceType) const {
        for (const auto& [type, factor] : factors) {
            if (type == sourceType) return factor;
        }
        return defaultFactor;
    }

    float defaultFactor = 1.0f;
    bool isAudio = false;  ///< the target sums signals: no value of its own, no limits
    float minimum = 0.0f;
    float maximum = 1.0f;
    std::vector<std::pair<int, float>> factors;  ///< source type and factor; the first match counts
};

/// What stands behind a source.
struct SourceInfo {
    int type = 0;
    std::vector<int> inputs;  ///< targets that its element reads; empty for inputs and main controls
};

/// The fixed shape of a modulation matrix. Targets that are slot levels follow the others.
struct ModulationLayout {
    int targetCount() const { return elementTargetCount + slotCount; }

    int elementTargetCount = 0;
    int slotCount = 0;
    std::vector<SourceInfo> sources;
    std::vector<TargetRange> ranges;
    std::vector<int> rangeOf;  ///< one per target: position in `ranges`, or -1
};

}  // namespace vanta
