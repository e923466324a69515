#pragma once

#include <array>

#include "gui/tree/modifiers.hpp"

namespace vanta::gui {

/// What held modifiers make of a gesture on a value. One table for the process, as a host may have habits of
/// its own; changed before any interface opens.
class ModifierMap {
public:
    static constexpr int kReset = 1;   ///< back to the default value
    static constexpr int kFine = 2;    ///< smaller steps
    static constexpr int kLinked = 4;  ///< the linked controls move as well

    static ModifierMap& shared();

    /// The behaviour of exactly these modifiers, the buttons aside; 0 for a combination that is not in the
    /// table.
    int behaviour(int modifiers) const { return behaviours_[key(modifiers)]; }
    void set(int modifiers, int behaviour) { behaviours_[key(modifiers)] = behaviour; }

private:
    ModifierMap();
    static std::size_t key(int modifiers);

    std::array<int, 0x88> behaviours_{};
};

}  // namespace vanta::gui
