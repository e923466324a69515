#pragma once

#include <array>
#include <mutex>

#include "plugin/model/state_list.hpp"

namespace vanta {

/// The A and B slots. The values of the current slot are those of the plug-in; the other one is stored. Any
/// thread but the audio thread, as a host stores both with a session.
class CompareStates {
public:
    static constexpr int kSlots = 2;

    struct Contents {
        int current = 0;
        bool modified = false;     ///< something has changed since the slots were made equal
        bool initialized = false;  ///< both slots hold a state
        std::array<State, kSlots> slots;
    };

    explicit CompareStates(const StateOwner& owner) : states_(owner, kSlots) {}

    /// Fills both slots, the first time only.
    void initialize();
    void copyToOther();
    /// Stores the values in the slot that they are leaving. Restores nothing.
    void switchTo(int slot);
    void markModified();

    int current() const;
    int other() const;
    bool modified() const;
    State state(int slot) const;

    /// Everything, the current slot with the plug-in's present state.
    Contents contents();
    void setContents(Contents contents);

private:
    static int otherThan(int slot) { return (slot + 1) % kSlots; }
    void store(int slot) { states_.store(slot, "", current_); }

    mutable std::mutex mutex_;
    int current_ = 0;
    bool modified_ = false;
    bool initialized_ = false;
    StateList states_;
};

}  // namespace vanta
