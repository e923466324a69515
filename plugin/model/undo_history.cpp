#include "plugin/model/undo_history.hpp"

#include <algorithm>

#include "foundation/numbers.hpp"
#include "plugin/model/generic_plugin.hpp"

namespace vanta {

UndoHistory::UndoHistory(GenericPlugin& plugin) : plugin_(plugin), states_(plugin, kStates) {}

void UndoHistory::storeInitial(const std::string& name) {
    if (index_ == 0 && undoCount_ == 0 && redoCount_ == 0) states_.store(index_, name);
}

void UndoHistory::push(const std::string& name) {
    index_ = (index_ + 1) % kStates;
    states_.store(index_, name);
    redoCount_ = 0;
    undoCount_ = std::min(undoCount_ + 1, kMaxSteps);
}

void UndoHistory::undo() {
    if (!canUndo()) return;
    step(-1);
    --undoCount_;
    redoCount_ = std::min(redoCount_ + 1, kMaxSteps);
}

void UndoHistory::redo() {
    if (!canRedo()) return;
    step(+1);
    --redoCount_;
    undoCount_ = std::min(undoCount_ + 1, kMaxSteps);
}

void UndoHistory::step(int delta) {
    index_ = (index_ + kStates + delta) % kStates;
    const State& state = states_.at(index_);
    plugin_.compareStates().switchTo(state.compareIndex);
    plugin_.restoreState(state);
    plugin_.compareStates().markModified();
}

bool UndoHistory::differsFromCurrent() const {
    const auto& stored = states_.at(index_).values;
    const auto now = plugin_.parameterValues();
    return !std::equal(stored.begin(), stored.end(), now.begin(), now.end(),
                       [](float a, float b) { return nearlyEqual(a, b); });
}

}  // namespace vanta
