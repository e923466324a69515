#include "cli/parameter_options.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>

#include "cli/exit_code.hpp"
#include "cli/parameter_text.hpp"
#include "foundation/ascii.hpp"
#include "limiter/parameters/parameter_table.hpp"

namespace vanta {

namespace {

constexpr std::array<ParameterOption, 13> kOptions{{
    {"--style", rowName("Style")},
    {"--gain", rowName("Gain")},
    {"--lookahead", rowName("Lookahead")},
    {"--attack", rowName("Attack")},
    {"--release", rowName("Release")},
    {"--oversampling", rowName("Oversampling")},
    {"--dc-filter", rowName("Filter DC Offset"), true},
    {"--output-level", rowName("Output Level")},
    {"--true-peak", rowName("True Peak Limiting"), true},
    {"--dither", rowName("Dithering")},
    {"--noise-shaping", rowName("Noise Shaping")},
    {"--unity-gain", rowName("Unity Gain"), true},
    {"--audition", rowName("Audition Limiting"), true},
}};

bool isNumber(std::string_view text) {
    return !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

bool isOnOff(std::string_view text) {
    return equalsIgnoringCase(text, "on") || equalsIgnoringCase(text, "off");
}

/// What follows a switch is its value or the next argument. A plain word that is no file can only be meant as
/// a value.
void checkWord(const std::string& flag, const std::string& next) {
    const bool isWord = !next.empty() && std::ranges::all_of(next, [](char c) {
        return (lowerCase(c) >= 'a' && lowerCase(c) <= 'z') || isDigit(c);
    });
    std::error_code error;
    if (isWord && !std::filesystem::exists(next, error))
        throw UsageError(fmt::format("{} cannot be '{}': use on or off", flag, next));
}

/// What people type, in the parameter's own words.
std::string spelledOut(const ParameterOption& option, const std::string& text) {
    if (option.flag == "--oversampling") {
        if (text == "1" || equalsIgnoringCase(text, "1x")) return "Off";
        if (isNumber(text)) return text + "x";
    }
    if (option.flag == "--dither" && isNumber(text)) return text == "0" ? "Off" : text + " Bits";
    return text;
}

}  // namespace

std::span<const ParameterOption> parameterOptions() {
    return kOptions;
}

const ParameterOption* findParameterOption(std::string_view flag) {
    const auto found = std::ranges::find(kOptions, flag, &ParameterOption::flag);
    return found == kOptions.end() ? nullptr : &*found;
}

std::string optionHelp(const ParameterOption& option, const std::string& text) {
    const LimiterSettings settings;
    const AbstractPluginParameter& parameter = *settings.find(option.parameter);
    return fmt::format(fmt::runtime(text), fmt::arg("summary", parameterRow(option.parameter).summary),
                       fmt::arg("values", valuesInSentence(parameter)),
                       fmt::arg("default", inSentence(parameter.text(parameter.defaultValue()))));
}

void setByOption(LimiterSettings& settings, const ParameterOption& option, const std::string& text) {
    setByText(*settings.find(option.parameter), spelledOut(option, text), text);
}

std::vector<std::string> joinValues(std::span<const std::string> arguments) {
    std::vector<std::string> joined;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        joined.push_back(arguments[i]);
        if (arguments[i] == "--") {
            joined.insert(joined.end(), arguments.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                          arguments.end());
            break;
        }
        const ParameterOption* option = findParameterOption(arguments[i]);
        if (!option) continue;
        const bool hasNext = i + 1 < arguments.size();
        if (option->isSwitch) {
            const bool hasValue = hasNext && isOnOff(arguments[i + 1]);
            if (hasNext && !hasValue) checkWord(arguments[i], arguments[i + 1]);
            joined.back() += hasValue ? "=" + arguments[++i] : "=on";
        } else if (hasNext) {
            joined.back() += "=" + arguments[++i];
        }
    }
    return joined;
}

}  // namespace vanta
