#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "plugin/model/preset_state.hpp"

namespace vanta {

/// One snapshot of a plug-in.
struct State {
    std::string name;  ///< a label for menus, mostly empty
    PresetState::Values preset;
    int compareIndex = 0;       ///< the compare slot that was current
    std::vector<float> values;  ///< of every parameter, in order; empty if nothing is stored
    std::vector<std::uint8_t> extra;
};

/// What snapshots are taken of and given back to. Any thread but the audio thread.
class StateOwner {
public:
    virtual ~StateOwner() = default;
    /// Preset, values and extra bytes as they stand now.
    virtual State captureState() const = 0;
    /// Takes over preset, values and extra bytes. If memory runs out nothing has changed.
    virtual void restoreState(State state) = 0;
};

/// A fixed number of snapshots.
class StateList {
public:
    StateList(const StateOwner& owner, int count) : owner_(owner), states_(static_cast<std::size_t>(count)) {}

    /// Takes a snapshot; an old one stays if memory runs out.
    void store(int i, const std::string& name, int compareIndex);
    const State& at(int i) const { return states_[static_cast<std::size_t>(i)]; }
    State& at(int i) { return states_[static_cast<std::size_t>(i)]; }

private:
    const StateOwner& owner_;
    std::vector<State> states_;
};

}  // namespace vanta
