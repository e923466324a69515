#pragma once

#include <vector>

#include "plugin/parameters/indexed_plugin_parameter.hpp"
#include "wave/producer.hpp"

namespace vanta {

/// Says how many elements of a kind are in use, and puts the rest to sleep.
class NumActiveParameter final : public IndexedPluginParameter<int> {
public:
    /// The producers that make up one element; may hold nulls.
    using Slot = std::vector<wave::Producer*>;

    using IndexedPluginParameter<int>::IndexedPluginParameter;

    /// Adds the elements of one chain of the graph, by slot.
    void attach(std::vector<Slot> group);
    /// Shorthand for elements of one producer.
    void attach(const std::vector<wave::Producer*>& group);

    /// Element i runs only while i is below the number. Does not allocate.
    VANTA_REALTIME void applyValue(float value) override;

private:
    void activate(const std::vector<Slot>& group) const;

    std::vector<std::vector<Slot>> groups_;
    int applied_ = -1;  ///< the number last applied, -1 before the first
};

}  // namespace vanta
