#include "app/parameter_options.hpp"

#include <algorithm>
#include <array>

#include "app/parameter_text.hpp"
#include "plugin/parameters/number_text.hpp"

namespace vanta {

namespace {

constexpr std::string_view kSound = "Sound";
constexpr std::string_view kOutput = "Output";
constexpr std::string_view kListening = "Listening";

constexpr std::array<ParameterOption, 13> kOptions{{
    {"--style", "Style", "NAME", kSound, "limiting algorithm; 'vanta styles' tells them apart"},
    {"--gain", "Gain", "DB", kSound, "drive into the limiter, 0 to 30 dB"},
    {"--lookahead", "Lookahead", "MS", kSound, "how long ahead of a peak to begin, 0 to 5 ms"},
    {"--attack", "Attack", "MS", kSound, "how soon the slow stage takes part, up to 10000 ms or '2 s'"},
    {"--release", "Release", "MS", kSound, "how soon the slow stage lets go, up to 10000 ms or '2 s'"},
    {"--oversampling", "Oversampling", "FACTOR", kSound, "off, 2x, 4x, 8x, 16x or 32x"},
    {"--dc-filter", "Filter DC Offset", "", kSound, "remove a constant offset from the input"},
    {"--output-level", "Output Level", "DB", kOutput, "ceiling, -30 to 0 dB; dBTP with true-peak limiting"},
    {"--true-peak", "True Peak Limiting", "", kOutput,
     "hold the peaks between samples too; on unless told off"},
    {"--dither", "Dithering", "BITS", kOutput, "off, 16, 18, 20, 22 or 24: word length to dither to"},
    {"--noise-shaping", "Noise Shaping", "NAME", kOutput,
     "none, basic, optimized or weighted, with --dither"},
    {"--unity-gain", "Unity Gain", "", kListening,
     "take the added level out again, to compare with the input"},
    {"--audition", "Audition Limiting", "", kListening, "write only what the limiter takes away"},
}};

bool isNumber(std::string_view text) {
    return !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

bool isOnOff(std::string_view text) {
    return equalsIgnoringCase(text, "on") || equalsIgnoringCase(text, "off");
}

/// The parameter's own words for what people type.
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

void setByOption(LimiterSettings& settings, const ParameterOption& option, const std::string& text) {
    setByText(*settings.find(option.parameter), spelledOut(option, text), option.flag);
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
        if (option->isSwitch()) {
            joined.back() += hasNext && isOnOff(arguments[i + 1]) ? "=" + arguments[++i] : "=on";
        } else if (hasNext) {
            joined.back() += "=" + arguments[++i];
        }
    }
    return joined;
}

}  // namespace vanta
