#pragma once

#include <optional>

#include "foundation/realtime.hpp"
#include "host/common/host_parameters.hpp"
#include "plugin/parameters/abstract_plugin_parameter.hpp"

namespace vanta {

/// A parameter as a control port. LV2 has no texts for values, so a port speaks the numbers that a user sees:
/// milliseconds, percent, decibels. Bypass is turned round, as LV2 asks whether a plug-in is enabled.
class Lv2Control {
public:
    /// Both live longer than this.
    Lv2Control(const AbstractPluginParameter& parameter, const HostParameter& described);

    const HostParameter& described() const { return *described_; }
    /// Off and on, and nothing else to tell.
    bool isToggle() const { return isToggle_; }
    float minimum() const { return minimum_; }
    float maximum() const { return maximum_; }

    VANTA_REALTIME float shown(float own) const;
    /// What lies outside the range counts as its nearest end. Nothing if it is not a number.
    VANTA_REALTIME std::optional<float> own(float shown) const;

private:
    const AbstractPluginParameter* parameter_;
    const HostParameter* described_;
    bool isToggle_;
    float minimum_;
    float maximum_;
};

}  // namespace vanta
