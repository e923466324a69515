#include "plugin/parameters/parameter_set_list.hpp"

namespace vanta {

AbstractParameterSetList::AbstractParameterSetList(GenericParameterOwner& owner, const std::string& name,
                                                   int count)
    : numActive(owner, "Num Active " + name), owner_(&owner) {
    numActive.setRange(0, count, 0);
}

void AbstractParameterSetList::collectParameters(std::vector<AbstractPluginParameter*>& list) {
    list.push_back(&numActive);
    for (int i = 0; i < size(); ++i) {
        const PluginParameterSet& set = at(i);
        for (int j = 0; j < set.parameterCount(); ++j) list.push_back(set.parameterAt(j));
    }
}

int AbstractParameterSetList::lastIndex() {
    int last = numActive.index();
    for (int i = 0; i < size(); ++i) last += at(i).parameterCount();
    return last;
}

bool AbstractParameterSetList::contains(int index) {
    const int last = lastIndex();
    if (index == -1) return last >= firstIndex();
    if (index >= firstIndex() && index <= last) return true;
    for (AbstractParameterSetList* linked : linkedLists) {
        if (linked->contains(index)) return true;
    }
    return false;
}

void AbstractParameterSetList::resetAll() {
    for (int i = 0; i < size(); ++i) at(i).reset();
    for (AbstractParameterSetList* linked : linkedLists) linked->resetAll();
}

void AbstractParameterSetList::moveUp(int slot, int count) {
    for (int i = slot; i < count; ++i) at(i).copyFrom(at(i + 1));
}

void AbstractParameterSetList::removeAt(int slot) {
    const int count = numActive.currentIndex();
    if (slot < 0 || slot >= count || numActive.value() <= numActive.minimum()) return;
    const int left = count - 1;
    ChangeBlock block(*owner_);
    numActive.setValue(static_cast<float>(left), 0);
    moveUp(slot, left);
    for (AbstractParameterSetList* linked : linkedLists) linked->moveUp(slot, left);
    at(left).reset();
    for (AbstractParameterSetList* linked : linkedLists) linked->at(left).reset();
}

}  // namespace vanta
