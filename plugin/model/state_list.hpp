#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "plugin/model/preset_state.hpp"

namespace vanta {

class GenericPlugin;

/// One snapshot of a plug-in.
struct State {
    std::string name;  ///< a label for menus, mostly empty
    PresetState::Values preset;
    int compareIndex = 0;       ///< the compare slot that was current
    std::vector<float> values;  ///< of every parameter, in order; empty if nothing is stored
    std::vector<std::uint8_t> extra;
};

/// A fixed number of snapshots.
class StateList {
public:
    StateList(GenericPlugin& plugin, int count) : plugin_(plugin), states_(static_cast<std::size_t>(count)) {}

    /// Takes a snapshot.
    void store(int i, const std::string& name);
    const State& at(int i) const { return states_[static_cast<std::size_t>(i)]; }
    State& at(int i) { return states_[static_cast<std::size_t>(i)]; }

private:
    GenericPlugin& plugin_;
    std::vector<State> states_;
};

}  // namespace vanta
