#include "gui/controls/modifier_map.hpp"

namespace vanta::gui {

ModifierMap& ModifierMap::shared() {
    static ModifierMap map;
    return map;
}

ModifierMap::ModifierMap() {
    set(modifier::kCtrl, kReset);
    set(modifier::kShift, kFine);
    set(modifier::kAlt, kLinked);
    set(modifier::kShift | modifier::kAlt, kFine | kLinked);
}

std::size_t ModifierMap::key(int modifiers) {
    constexpr int kMask = modifier::kShift | modifier::kAlt | modifier::kCtrl | modifier::kSecondaryClick;
    // Window managers move windows by Alt and the pointer; the key beside it does as well.
    if (modifiers & modifier::kMeta) modifiers |= modifier::kAlt;
    return static_cast<std::size_t>(modifiers & kMask);
}

}  // namespace vanta::gui
