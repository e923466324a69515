#pragma once

#include "plugin/parameters/float_plugin_parameter.hpp"
#include "plugin/parameters/forward_plugin_parameter.hpp"

namespace vanta {

/// The Lookahead knob: sets its target to the share of the range, 0 to 1. The style decides
/// what a share of the longest look-ahead means.
class TransientTimeForwardParameter final : public ForwardPluginParameter<FloatPluginParameter> {
public:
    using ForwardPluginParameter::ForwardPluginParameter;

private:
    float forwarded(float value) const override { return normalize(value); }
};

}  // namespace vanta
