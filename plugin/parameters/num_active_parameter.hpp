#pragma once

#include <vector>

#include "plugin/parameters/indexed_plugin_parameter.hpp"
#include "wave/producer.hpp"

namespace vanta {

/// Says how many elements of a kind are in use, and puts the rest to sleep.
class NumActiveParameter final : public IndexedPluginParameter<int> {
public:
    /// The producers that make up one element; null stands for none.
    using Slot = std::vector<wave::Producer*>;

    using IndexedPluginParameter<int>::IndexedPluginParameter;

    /// Adds the elements of one chain of the graph, by slot. Result: the group's number, for `replace`.
    int attach(std::vector<Slot> group);
    /// Shorthand for elements of one producer.
    int attach(const std::vector<wave::Producer*>& group);
    /// Exchanges an element that was built anew. The old producers are not touched, they may be gone.
    void replace(int group, int slot, Slot producers);

    /// Element i runs only while i is below the number. Does not allocate.
    VANTA_REALTIME void applyValue(float value) override;

private:
    void activate(const Slot& slot, std::size_t position) const;

    std::vector<std::vector<Slot>> groups_;
    int applied_ = -1;  ///< the number by which the elements stand, -1 before the first
};

}  // namespace vanta
