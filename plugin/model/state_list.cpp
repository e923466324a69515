#include "plugin/model/state_list.hpp"

#include <utility>

namespace vanta {

void StateList::store(int i, const std::string& name, int compareIndex) {
    State state = owner_.captureState();
    state.name = name;
    state.compareIndex = compareIndex;
    at(i) = std::move(state);
}

}  // namespace vanta
