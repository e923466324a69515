#include "plugin/model/undo_history.hpp"

#include <algorithm>
#include <utility>

#include "foundation/numbers.hpp"

namespace vanta {

void UndoHistory::storeInitial(const std::string& name) {
    const bool isEmpty = index_ == 0 && undoCount_ == 0 && redoCount_ == 0;
    if (isEmpty) states_.store(index_, name, compare_.current());
}

void UndoHistory::ensureInitial() {
    if (states_.at(index_).values.empty()) storeInitial("Initial state");
}

void UndoHistory::push(const std::string& name) {
    // Where nothing led here, undo finds nothing else.
    ensureInitial();
    const int next = (index_ + 1) % kStates;
    states_.store(next, name, compare_.current());
    index_ = next;
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
    const int next = (index_ + kStates + delta) % kStates;
    State state = states_.at(next);
    compare_.switchTo(state.compareIndex);
    index_ = next;
    owner_.restoreState(std::move(state));
    compare_.markModified();
}

bool UndoHistory::differsFromCurrent() const {
    const auto& stored = states_.at(index_).values;
    const auto now = owner_.captureState().values;
    return !std::equal(stored.begin(), stored.end(), now.begin(), now.end(),
                       [](float a, float b) { return nearlyEqual(a, b); });
}

}  // namespace vanta
