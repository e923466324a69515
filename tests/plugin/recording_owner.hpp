#pragma once

#include <vector>

#include "plugin/base/generic_plugin_base.hpp"
#include "plugin/parameters/abstract_plugin_parameter.hpp"

namespace vanta::test {

/// A plug-in that keeps what its parameters tell it, and hands deferred callbacks out at the end of a block.
class RecordingOwner final : public GenericPluginBase {
public:
    struct Change {
        int index;
        float value;
        int flags;
        bool operator==(const Change&) const = default;
    };

    explicit RecordingOwner(int layout = 1) : GenericPluginBase(layout) {}

    void beginChange() override { forwarders.beginUpdate(); }
    void endChange() override {
        ++blocksEnded;
        forwarders.endUpdate();
    }
    void parameterChanged(int index, float value, int flags) override {
        changes.push_back({index, value, flags});
        if (applies) parameterAt(index)->applyValue(value);
    }

    std::vector<float> values() const {
        std::vector<float> all;
        for (int i = 0; i < parameterCount(); ++i) all.push_back(parameterAt(i)->value());
        return all;
    }

    std::vector<Change> changes;
    int blocksEnded = 0;
    bool applies = false;  ///< apply changes at once, as the audio side does
};

}  // namespace vanta::test
