#pragma once

#include "plugin/parameters/float_plugin_parameter.hpp"

namespace vanta {

/// The Lookahead knob. What a share of the longest look-ahead means is the style's business.
class TransientTimeForwardParameter final : public FloatPluginParameter {
public:
    using FloatPluginParameter::FloatPluginParameter;

    /// Sets `target` to the share of the range, 0 to 1, whether or not anything changed here.
    void setValue(float value, int flags) override {
        FloatPluginParameter::setValue(value, flags);
        if (target) target->setValue(normalize(value), flags);
    }

    AbstractPluginParameter* target = nullptr;  ///< optional, not owned
};

}  // namespace vanta
