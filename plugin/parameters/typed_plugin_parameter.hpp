#pragma once

#include <vector>

#include "foundation/property.hpp"
#include "plugin/parameters/abstract_plugin_parameter.hpp"

namespace vanta {

/// A parameter whose engine values are of type `T`, and those who listen to them.
template <typename T, typename Base>
class TypedPluginParameter : public Base {
public:
    using Base::Base;

    /// Told of the engine value by every `applyValue`, changed or not, with this parameter as sender, an
    /// AbstractPluginParameter*. Not owned.
    void addListener(ValueAssignable<T>& listener) { listeners_.push_back(&listener); }

protected:
    VANTA_REALTIME void tellListeners(T engineValue) {
        for (ValueAssignable<T>* listener : listeners_) {
            listener->assign(engineValue, static_cast<AbstractPluginParameter*>(this));
        }
    }

private:
    std::vector<ValueAssignable<T>*> listeners_;
};

}  // namespace vanta
