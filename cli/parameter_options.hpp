#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/offline/limiter_settings.hpp"

namespace vanta {

/// An option of the command line that sets one parameter.
struct ParameterOption {
    std::string_view flag;  ///< with its dashes
    std::string_view parameter;
    bool isSwitch = false;  ///< takes "on", "off" or nothing
};

std::span<const ParameterOption> parameterOptions();
/// Null if there is none.
const ParameterOption* findParameterOption(std::string_view flag);

/// Help as resources/text/settings_options.txt has it, with what is known of the parameter in place of
/// {summary}, {values} and {default}.
std::string optionHelp(const ParameterOption& option, const std::string& text);

/// Sets the option's parameter to what `text` says. Besides the parameter's own words, "4" means "4x" and
/// "16" means "16 Bits", where a number would otherwise be a position in the list. UsageError for anything
/// else.
void setByOption(LimiterSettings& settings, const ParameterOption& option, const std::string& text);

/// Joins each of these options with its value by "=", so that a value may begin with a dash and a switch may
/// come with or without "on" or "off".
std::vector<std::string> joinValues(std::span<const std::string> arguments);

}  // namespace vanta
