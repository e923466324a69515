#pragma once

#include "plugin/parameters/abstract_plugin_parameter.hpp"

namespace vanta {

/// A parameter that hands every value that it is set to on to another, whether or not anything changed here:
/// the other may have been set by somebody else in the meantime. Both changes take effect together.
template <typename Parameter>
class ForwardPluginParameter : public Parameter {
public:
    using Parameter::Parameter;

    void setValue(float value, int flags) final {
        if (!target) {
            Parameter::setValue(value, flags);
            return;
        }
        const ChangeBlock both(this->owner());
        Parameter::setValue(value, flags);
        target->setValue(forwarded(value), flags);
    }

    AbstractPluginParameter* target = nullptr;  ///< optional, not owned

private:
    /// What the target is set to: by default the value as it came in.
    virtual float forwarded(float value) const { return value; }
};

}  // namespace vanta
