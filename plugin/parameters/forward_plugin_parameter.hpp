#pragma once

#include "plugin/parameters/abstract_plugin_parameter.hpp"

namespace vanta {

/// A parameter that hands every value that takes effect on to another, whether or not anything changed here:
/// the other may have been set by somebody else in the meantime. It does so on the owner's own thread, where
/// values are in effect one after the other, so that the other ends with this one's last.
template <typename Parameter>
class ForwardPluginParameter : public Parameter {
public:
    using Parameter::Parameter;

    VANTA_REALTIME void applyValue(float value) override {
        Parameter::applyValue(value);
        forward(value);
    }
    /// Sets the target alone. On the owner's own thread.
    VANTA_REALTIME void forward(float value) {
        if (target) target->setValue(forwarded(value), 0);
    }

    AbstractPluginParameter* target = nullptr;  ///< optional, not owned

private:
    /// What the target is set to: by default the value as it came in.
    virtual float forwarded(float value) const { return value; }
};

}  // namespace vanta
