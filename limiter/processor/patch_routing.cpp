#include "limiter/processor/patch_routing.hpp"

#include <algorithm>
#include <vector>

namespace vanta {

namespace {

constexpr ElementKind kVca = ElementKind::Vca;

/// Walks from a target against the signal.
class SignalWalk {
public:
    SignalWalk(const EngineLayout& layout, StyleValues values)
        : layout_(layout), values_(values), visited_(layout.targets().size(), false) {}

    /// The first VCA on the way, -1 for none.
    int vcaBefore(int target) {
        if (visited_[static_cast<std::size_t>(target)]) return -1;
        visited_[static_cast<std::size_t>(target)] = true;
        const int slots = values_.integerAt(layout_.group(ElementKind::Slot).numActivePosition);
        for (int slot = 0; slot < slots; ++slot) {
            const int source = value(slot, SlotField::Source) - 1;
            if (value(slot, SlotField::Target) - 1 != target || value(slot, SlotField::Bypassed)) continue;
            if (source < 0) continue;
            const EngineSource& from = layout_.sources()[static_cast<std::size_t>(source)];
            if (from.kind == kVca) return from.element;
            for (const int input : from.inputs) {
                if (!layout_.rangeOf(input).isAudio) continue;
                if (const int found = vcaBefore(input); found >= 0) return found;
            }
        }
        return -1;
    }

private:
    int value(int slot, SlotField field) const {
        return values_.integerAt(layout_.slotPosition(slot, field));
    }

    const EngineLayout& layout_;
    StyleValues values_;
    std::vector<bool> visited_;
};

}  // namespace

StyleRouting patchRouting(const EngineLayout& layout, StyleValues values) {
    SignalWalk walk(layout, values);
    StyleRouting routing;
    const int last = walk.vcaBefore(kOutputTarget);
    if (last < 0) {
        const ElementGroup& vcas = layout.group(kVca);
        routing.firstVca = std::min(values.integerAt(vcas.numActivePosition), vcas.built - 1);
        return routing;
    }
    const int before = walk.vcaBefore(layout.targetIndex(kVca, last, inputIndex(kVca, "Input")));
    routing.firstVca = before < 0 ? last : before;
    routing.secondVca = before < 0 ? -1 : last;
    return routing;
}

}  // namespace vanta
