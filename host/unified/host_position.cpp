#include "host/unified/host_position.hpp"

#include <cmath>

namespace vanta {

double hostPosition(const AbstractPluginParameter& parameter, float value) {
    const double low = parameter.minimum();
    const double range = parameter.maximum() - low;
    return range > 0.0 ? (value - low) / range : 0.0;
}

float valueAt(const AbstractPluginParameter& parameter, double position) {
    const double low = parameter.minimum();
    return fromHostValue(parameter, low + position * (parameter.maximum() - low));
}

float fromHostValue(const AbstractPluginParameter& parameter, double value) {
    const bool stepped = parameter.kind() == AbstractPluginParameter::Kind::Indexed;
    return static_cast<float>(stepped ? std::floor(value + 0.5) : value);
}

}  // namespace vanta
