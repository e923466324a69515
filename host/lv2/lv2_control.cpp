#include "host/lv2/lv2_control.hpp"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace vanta {

Lv2Control::Lv2Control(const AbstractPluginParameter& parameter, const HostParameter& described)
    : parameter_(&parameter),
      described_(&described),
      isToggle_(described.isBypass || described.labels == std::vector<std::string>{"Off", "On"}),
      minimum_(shown(parameter.minimum())),
      maximum_(shown(parameter.maximum())) {
    if (minimum_ > maximum_) std::swap(minimum_, maximum_);
}

float Lv2Control::shown(float own) const {
    if (described_->isBypass) return 1.0f - own;
    return described_->isStepped() ? own : parameter_->toDisplay(own);
}

std::optional<float> Lv2Control::own(float shown) const {
    if (std::isnan(shown)) return {};
    // LV2 takes whatever is above zero as on.
    if (isToggle_) shown = shown > 0.0f ? 1.0f : 0.0f;
    shown = std::clamp(shown, minimum_, maximum_);
    if (described_->isBypass) return 1.0f - shown;
    if (described_->isStepped()) return std::floor(shown + 0.5f);
    return std::clamp(parameter_->fromDisplay(shown), parameter_->minimum(), parameter_->maximum());
}

}  // namespace vanta
