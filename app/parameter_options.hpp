#pragma once

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/offline/limiter_settings.hpp"

namespace vanta {

/// An option of the command line that sets one parameter.
struct ParameterOption {
    std::string_view flag;  ///< with its dashes
    std::string_view parameter;
    std::string_view value;  ///< what stands for the value in the help; empty for a switch
    std::string_view group;
    std::string_view help;

    bool isSwitch() const { return value.empty(); }
};

std::span<const ParameterOption> parameterOptions();
/// Null if there is none.
const ParameterOption* findParameterOption(std::string_view flag);

/// Gives the option's parameter the value that `text` says. Besides the parameter's own words "4" stands for
/// "4x" and "16" for "16 Bits", where a number would otherwise be a position in the list. UsageError.
void setByOption(LimiterSettings& settings, const ParameterOption& option, const std::string& text);

/// Joins each of these options with its value by "=", so that a value may begin with a dash and a switch may
/// stand with or without "on" or "off" behind it.
std::vector<std::string> joinValues(std::span<const std::string> arguments);

}  // namespace vanta
