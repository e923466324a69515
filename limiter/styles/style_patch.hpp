#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "limiter/styles/dynamics_engine_configuration.hpp"

namespace vanta {

/// A style of the user's own, which takes the place of those that the program carries.
struct StylePatch {
    std::string name;
    std::vector<float> values;  ///< of patchConfiguration(), in table order, free of faults
};

/// What such a style may use: every element that the tables describe, and checked signals, as nobody knows
/// what it amplifies. The limits of time are those of the limiter, which its delays rely on.
constexpr DynamicsEngineConfiguration patchConfiguration() {
    const DynamicsEngineConfiguration whole;
    DynamicsEngineConfiguration result = limiterConfiguration();
    result.limitsSignals = true;
    result.built = whole.built;
    result.maxConvolversInGainPath = whole.maxConvolversInGainPath;
    result.maxSmartClippersInGainPath = whole.maxSmartClippersInGainPath;
    result.maxOutputSmartClippers = whole.maxOutputSmartClippers;
    return result;
}

/// Reads the source of one, see parseStyleSource. `fileName` is what faults are told with; the name of the
/// patch is its last part, without an extension. Throws StyleError.
StylePatch readStylePatch(std::string_view text, const std::string& fileName);

}  // namespace vanta
