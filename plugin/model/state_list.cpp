#include "plugin/model/state_list.hpp"

#include "plugin/model/generic_plugin.hpp"

namespace vanta {

void StateList::store(int i, const std::string& name) {
    State& state = at(i);
    state.name = name;
    state.preset = plugin_.presetState().values();
    state.compareIndex = plugin_.compareStates().current();
    state.values = plugin_.parameterValues();
    state.extra = plugin_.extraState();
}

}  // namespace vanta
