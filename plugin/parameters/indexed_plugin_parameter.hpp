#pragma once

#include "plugin/parameters/indexed_parameter.hpp"
#include "plugin/parameters/typed_plugin_parameter.hpp"

namespace vanta {

/// A stepped parameter for `bool`, `int` or an enumeration.
template <typename T>
class IndexedPluginParameter : public TypedPluginParameter<T, IndexedParameter> {
public:
    using TypedPluginParameter<T, IndexedParameter>::TypedPluginParameter;

    /// What reaches the audio code for the index `value`.
    VANTA_REALTIME T engineValue(float value) const {
        return static_cast<T>(this->mappedOf(this->limit(value)));
    }
    /// The mapped value of the current index. Any thread.
    T mapped() const { return static_cast<T>(this->mappedOf(this->currentIndex())); }
    /// Sets by mapped value.
    void setMapped(T value, int flags = 0) {
        this->setValue(static_cast<float>(this->indexOf(static_cast<int>(value))), flags);
    }

    VANTA_REALTIME void applyValue(float value) override { this->tellListeners(engineValue(value)); }
};

}  // namespace vanta
