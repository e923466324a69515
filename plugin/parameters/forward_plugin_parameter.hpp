#pragma once

#include <utility>

#include "plugin/parameters/abstract_plugin_parameter.hpp"

namespace vanta {

/// A parameter that hands every value that it is set to on to another, as it came in and whether or not
/// anything changed here: the other may have been set by somebody else in the meantime.
template <typename Parameter>
class ForwardPluginParameter : public Parameter {
public:
    using Parameter::Parameter;

    void setValue(float value, int flags) override {
        if (!target) {
            Parameter::setValue(value, flags);
            return;
        }
        const ChangeBlock both(this->owner());
        Parameter::setValue(value, flags);
        target->setValue(value, flags);
    }

    AbstractPluginParameter* target = nullptr;  ///< optional, not owned
};

}  // namespace vanta
