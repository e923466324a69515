#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "plugin/parameters/num_active_parameter.hpp"
#include "plugin/parameters/plugin_parameter_set.hpp"

namespace vanta {

/// Parameter sets of one type by slot.
class AbstractParameterSetArray {
public:
    virtual ~AbstractParameterSetArray() = default;
    virtual int size() const = 0;
    virtual PluginParameterSet& at(int slot) = 0;
};

/// A list of parameter sets with a parameter that says how many are in use: the first ones.
class AbstractParameterSetList : public AbstractParameterSetArray {
public:
    /// The owner gets "Num Active " and the list's name, from 0 to `count`, before the parameters of the
    /// sets.
    AbstractParameterSetList(GenericParameterOwner& owner, const std::string& name, int count);
    AbstractParameterSetList(const AbstractParameterSetList&) = delete;
    AbstractParameterSetList& operator=(const AbstractParameterSetList&) = delete;

    /// Appends `numActive` and the parameters of all sets.
    void collectParameters(std::vector<AbstractPluginParameter*>& list);
    /// Whether the plug-in's parameter `index` belongs to this list or a linked one; -1 asks whether there is
    /// any parameter.
    bool contains(int index);
    /// Resets every set and then every linked list.
    void resetAll();
    int firstIndex() const { return numActive.index(); }
    /// Takes a slot out and moves those after it up, here and in linked lists. Nothing happens if the slot
    /// is not in use or if no fewer slots may be.
    virtual void removeAt(int slot);

    NumActiveParameter numActive;
    std::vector<AbstractParameterSetList*> linkedLists;  ///< their slots move in step with these

private:
    int lastIndex();
    void moveUp(int slot, int count);

    GenericParameterOwner* owner_;
};

template <typename T>
class ParameterSetList : public AbstractParameterSetList {
public:
    /// Builds the sets as T(owner, prefix and number from 1, arguments...).
    template <typename... Arguments>
    ParameterSetList(GenericParameterOwner& owner, const std::string& name, int count,
                     const std::string& prefix, Arguments&&... arguments)
        : AbstractParameterSetList(owner, name, count) {
        for (int i = 0; i < count; ++i) {
            sets_.push_back(std::make_unique<T>(owner, prefix + std::to_string(i + 1), arguments...));
        }
    }

    int size() const override { return static_cast<int>(sets_.size()); }
    T& at(int slot) override { return *sets_[static_cast<std::size_t>(slot)]; }

private:
    std::vector<std::unique_ptr<T>> sets_;
};

/// Rewires connections when the elements at their ends move to other slots.
class ConnectionRenumbering {
public:
    virtual ~ConnectionRenumbering() = default;
    /// Connections of `removed` consecutive numbers from `first` on are dropped; those of numbers up to and
    /// with `last` after them go down by `removed`.
    virtual void sourcesRemoved(int first, int removed, int last) = 0;
    virtual void targetsRemoved(int first, int removed, int last) = 0;
};

/// Which numbers of sources or targets the slots of a list have: `perSlot` each, from `first` on.
struct ConnectionNumbers {
    int first = 0;
    int perSlot = 0;

    int of(int slot) const { return first + slot * perSlot; }
};

/// Sets whose elements are targets of connections.
template <typename T>
class TargetParameterSetList : public ParameterSetList<T> {
public:
    using ParameterSetList<T>::ParameterSetList;

    void removeAt(int slot) override {
        const int count = this->numActive.currentIndex();
        ParameterSetList<T>::removeAt(slot);
        if (!renumbering || this->numActive.currentIndex() == count) return;
        renumbering->targetsRemoved(targets.of(slot), targets.perSlot, targets.of(count) - 1);
    }

    ConnectionNumbers targets;
    ConnectionRenumbering* renumbering = nullptr;  ///< optional, not owned
};

/// Sets whose elements are sources of connections, and mostly targets as well.
template <typename T>
class SourceParameterSetList : public TargetParameterSetList<T> {
public:
    using TargetParameterSetList<T>::TargetParameterSetList;

    void removeAt(int slot) override {
        const int count = this->numActive.currentIndex();
        TargetParameterSetList<T>::removeAt(slot);
        if (!this->renumbering || this->numActive.currentIndex() == count) return;
        this->renumbering->sourcesRemoved(sources.of(slot), sources.perSlot, sources.of(count) - 1);
    }

    ConnectionNumbers sources;
};

}  // namespace vanta
