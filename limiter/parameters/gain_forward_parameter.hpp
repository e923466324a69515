#pragma once

#include "plugin/parameters/float_plugin_parameter.hpp"

namespace vanta {

/// The Gain knob: raises the signal into the limiter by lowering the engine's threshold.
class GainForwardParameter final : public FloatPluginParameter {
public:
    using FloatPluginParameter::FloatPluginParameter;

    /// Sets `target` to the gain with its sign turned round, whether or not anything changed here.
    void setValue(float value, int flags) override;

    AbstractPluginParameter* target = nullptr;  ///< the engine's threshold in dB; optional, not owned
};

}  // namespace vanta
