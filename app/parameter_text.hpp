#pragma once

#include <string>
#include <string_view>

#include "host/offline/limiter_settings.hpp"

namespace vanta {

/// What a parameter can be set to: "0.00 dB to 30.00 dB" or "Off, 2x, 4x".
std::string rangeText(const AbstractPluginParameter& parameter);

/// Sets a parameter in the words that its own parser takes. UsageError, with `asked` in front, names what
/// would have been possible.
void setByText(AbstractPluginParameter& parameter, const std::string& text, std::string_view asked);

/// Sets what "Name=text" says, and gives the parameter back. UsageError for an unknown name, too, with the
/// nearest known one.
AbstractPluginParameter& setByAssignment(LimiterSettings& settings, const std::string& assignment);

}  // namespace vanta
