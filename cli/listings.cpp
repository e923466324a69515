#include "cli/listings.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <string_view>
#include <vector>

#include "audiofile/channel_mapping.hpp"
#include "audiofile/file_format.hpp"
#include "cli/parameter_text.hpp"
#include "cli/wrapped_text.hpp"
#include "host/offline/limiter_settings.hpp"
#include "limiter/parameters/parameter_table.hpp"
#include "limiter/styles/style_names.hpp"

namespace vanta {

namespace {

std::string speakerName(int type) {
    if (type & kLfeChannel) return "LFE";
    if ((type & kUnpairedChannel) && !(type & kCenterChannel)) return "M";
    const int angle = type & kAngleMask;
    if (type & kCenterChannel) return angle == 180 ? "Cs" : "C";
    const std::string_view side = type & kLeftChannel ? "L" : "R";
    if (type & kHeightChannel) return fmt::format("{}h", side);
    if (angle == 22) return fmt::format("{}c", side);
    if (angle == 90) return fmt::format("{}ss", side);
    if (angle == 110) return fmt::format("{}s", side);
    return angle > 110 ? fmt::format("{}rs", side) : std::string(side);
}

}  // namespace

std::string styleList() {
    const std::size_t initial = static_cast<std::size_t>(parameterRow("Style").values.initial);
    std::string result;
    for (const StyleRow& style : kStyleTable) {
        const bool isDefault = &style == &kStyleTable[initial];
        result += fmt::format("{:<12} {}{}\n", style.name, style.summary, isDefault ? " (default)" : "");
    }
    return result;
}

std::string parameterList(bool withHelp) {
    const LimiterSettings settings;
    std::string result =
        fmt::format("{:>2}  {:<36}{:<17}{:<13}{}\n", "", "Name", "Default", "Automatable", "Values");
    for (int i = 0; i < settings.parameterCount(); ++i) {
        const AbstractPluginParameter& parameter = *settings.parameterAt(i);
        result += fmt::format("{:>2}  {:<36}{:<17}{:<13}{}\n", i, parameter.name(),
                              parameter.text(parameter.defaultValue()), parameter.automatable ? "yes" : "no",
                              rangeText(parameter));
        result += wrapped(
            withHelp ? std::string_view(parameter.helpText) : parameterRow(parameter.name()).summary, 6);
    }
    return result;
}

std::string formatList() {
    std::string result = "Types (--format)\n";
    for (const FileType& type : fileTypes()) {
        std::vector<std::string_view> subtypes;
        for (const FileSubtype& subtype : fileSubtypes()) {
            if (canBeWritten(type.format | subtype.format, 2, 48000)) subtypes.push_back(subtype.name);
        }
        result += fmt::format("  {:<8}{}\n{}", type.name, type.description,
                              wrapped(fmt::format("{}", fmt::join(subtypes, " ")), 10));
    }
    result += "Subtypes (--subtype)\n";
    for (const FileSubtype& subtype : fileSubtypes()) {
        result += fmt::format("  {:<10}{}\n", subtype.name, subtype.description);
    }
    return result;
}

std::string layoutList() {
    std::string result;
    for (ChannelLayout layout = 0; layout < kChannelLayoutCount; ++layout) {
        std::vector<std::string> speakers;
        for (const int type : channelTypes(layout)) speakers.push_back(speakerName(type));
        result += fmt::format("{:<10}{}\n", channelLayoutName(layout), fmt::join(speakers, " "));
    }
    return result;
}

}  // namespace vanta
