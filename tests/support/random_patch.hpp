#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "limiter/styles/engine_layout.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {

/// Values of a style that nobody would write: everything within its range, often at an end of it, most
/// elements active, and slots from anywhere to whatever is heard, loops included.
inline std::vector<float> randomPatch(const EngineLayout& layout, std::uint64_t seed) {
    Random random(seed);
    std::vector<float> values;
    for (const EngineParameter& parameter : layout.parameters()) {
        const ParameterDescription& range = parameter.description;
        const double share = std::clamp(0.5 + 0.7 * random.bipolar(), 0.0, 1.0);
        const double value = double{range.minimum} + share * (double{range.maximum} - double{range.minimum});
        const bool isCount = parameter.role == EngineParameter::Role::NumActive;
        if (isCount && random.between(0, 3) > 0) {
            values.push_back(range.maximum);
        } else if (range.name == "Solo" && random.between(0, 40) > 0) {
            values.push_back(0.0f);  // one takes the place of all that leads to Output
        } else {
            values.push_back(static_cast<float>(range.isFloat() ? value : std::round(value)));
        }
    }
    const int slots = layout.configuration().slotCount;
    values[static_cast<std::size_t>(layout.group(ElementKind::Slot).numActivePosition)] =
        static_cast<float>(slots);
    // From Output against the signal: what is not heard does not run.
    std::vector<int> heard(4, kOutputTarget);
    for (int slot = 0; slot < slots; ++slot) {
        const auto set = [&](SlotField field, int value) {
            values[static_cast<std::size_t>(layout.slotPosition(slot, field))] = static_cast<float>(value);
        };
        const int source = random.between(0, static_cast<int>(layout.sources().size()) - 1);
        const int last = static_cast<int>(heard.size()) - 1;
        set(SlotField::Bypassed, random.between(0, 30) == 0);
        set(SlotField::Source, 1 + (slot % 5 == 4 ? random.between(0, 1) : source));
        set(SlotField::Target, 1 + heard[static_cast<std::size_t>(random.between(0, last))]);
        for (const int input : layout.sources()[static_cast<std::size_t>(source)].inputs) {
            heard.push_back(input);
        }
        if (slot % 8 == 0) heard.push_back(layout.targetIndex(ElementKind::Slot, slot, 0));
    }
    return values;
}

}  // namespace vanta::test
