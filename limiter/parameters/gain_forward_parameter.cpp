#include "limiter/parameters/gain_forward_parameter.hpp"

#include <algorithm>
#include <cmath>

namespace vanta {

// The threshold stays this far below full scale, so that a signal at full scale is limited at a gain of 0.
constexpr float kLeastDb = 0.001f;

void GainForwardParameter::setValue(float value, int flags) {
    if (std::isnan(value)) return;
    FloatPluginParameter::setValue(value, flags);
    if (target) target->setValue(-std::max(limit(value), kLeastDb), flags);
}

}  // namespace vanta
