#include "plugin/parameters/abstract_plugin_parameter.hpp"

#include <cmath>
#include <utility>

#include "foundation/numbers.hpp"

namespace vanta {

AbstractPluginParameter::AbstractPluginParameter(GenericParameterOwner& owner, std::string name, Kind kind)
    : displayName(name), name_(std::move(name)), owner_(&owner), kind_(kind) {
    index_ = owner_->addParameter(*this);
}

float AbstractPluginParameter::normalizeZoned(float value, int /*steps*/) const {
    return normalize(value);
}

bool AbstractPluginParameter::denormalizeZoned(float normal, int /*steps*/, float* out) const {
    *out = denormalize(normal);
    return true;
}

bool AbstractPluginParameter::parseText(const std::string& /*text*/, float* out) const {
    *out = value();
    return false;
}

bool AbstractPluginParameter::exceedsRange(const std::string& /*text*/) const {
    return false;
}

std::string AbstractPluginParameter::text(float value, int maxLength) const {
    std::string full = text(value);
    if (maxLength > 0) full.resize(std::min(full.size(), static_cast<std::size_t>(maxLength)));
    return full;
}

int AbstractPluginParameter::zoneValue(int /*mapped*/) const {
    return -1;
}

float AbstractPluginParameter::scaleValue(float value, float from, float to) const {
    const float shownFrom = toDisplay(from);
    if (std::abs(shownFrom) <= kEqualWithin) return to - from + value;
    return fromDisplay(toDisplay(value) * (toDisplay(to) / shownFrom));
}

}  // namespace vanta
