#pragma once

#include <algorithm>

#include "plugin/parameters/float_plugin_parameter.hpp"
#include "plugin/parameters/forward_plugin_parameter.hpp"

namespace vanta {

/// The Gain knob: raises the signal into the limiter by lowering its target, the engine's threshold in dB.
class GainForwardParameter final : public ForwardPluginParameter<FloatPluginParameter> {
public:
    using ForwardPluginParameter::ForwardPluginParameter;

private:
    // The threshold stays this far below full scale, so that even a gain of 0 limits a full-scale signal.
    static constexpr float kLeastDb = 0.001f;

    float forwarded(float value) const override { return -std::max(limit(value), kLeastDb); }
};

}  // namespace vanta
