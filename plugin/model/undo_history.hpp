#pragma once

#include <string>

#include "plugin/model/compare_states.hpp"
#include "plugin/model/state_list.hpp"

namespace vanta {

/// What a user did, to be taken back step by step, also over a change of the compare slot. Changes by a host
/// or by automation make no step of their own. On the thread of the interface.
class UndoHistory {
public:
    static constexpr int kMaxSteps = 100;

    UndoHistory(StateOwner& owner, CompareStates& compare)
        : owner_(owner), compare_(compare), states_(owner, kStates) {}

    /// What the first undo leads back to; renewed by each call until there is a step.
    void storeInitial(const std::string& name);
    /// The same, once: for an instance whose interface was never open.
    void ensureInitial();
    /// A new step, after which nothing can be redone.
    void push(const std::string& name);
    void undo();
    void redo();

    bool canUndo() const { return undoCount_ > 0; }
    bool canRedo() const { return redoCount_ > 0; }
    int undoCount() const { return undoCount_; }
    int redoCount() const { return redoCount_; }
    /// Whether any parameter differs from the newest step.
    bool differsFromCurrent() const;

private:
    /// One more than steps, as the state before the first step is kept as well.
    static constexpr int kStates = kMaxSteps + 1;

    void step(int delta);

    int redoCount_ = 0;
    int undoCount_ = 0;
    int index_ = 0;
    StateOwner& owner_;
    CompareStates& compare_;
    StateList states_;
};

}  // namespace vanta
