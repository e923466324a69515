#pragma once

#include <string>
#include <string_view>

#include "host/offline/limiter_settings.hpp"

namespace vanta {

/// What a parameter can be set to: "0 to 30 dB" or "Off, 2x, 4x".
std::string rangeText(const AbstractPluginParameter& parameter);
/// The same within a sentence: "off, 2x or 4x".
std::string valuesInSentence(const AbstractPluginParameter& parameter);
/// "noise shaping" of "Noise Shaping", but "receive MIDI".
std::string inSentence(std::string name);

/// Sets a parameter in the words that its own parser takes. UsageError for others, which quotes what was
/// `typed`, says what the parameter takes.
void setByText(AbstractPluginParameter& parameter, const std::string& text, const std::string& typed);

/// The name in "Name=text".
std::string assignedName(std::string_view assignment);
/// Sets what "Name=text" says. UsageError also for an unknown name, with the nearest known one.
void setByAssignment(LimiterSettings& settings, const std::string& assignment);

}  // namespace vanta
