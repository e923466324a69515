#include "limiter/parameters/channel_link_parameter.hpp"

#include <algorithm>
#include <string_view>
#include <utility>

#include "plugin/parameters/label_text.hpp"
#include "plugin/parameters/number_text.hpp"

namespace vanta {
namespace {

/// Layouts from this row of the layout table on have more than one pair.
constexpr int kFirstSurroundLayout = 2;

/// The most linkers that follow one parameter: a change of style reassigns them on the audio thread.
constexpr std::size_t kMostLinkers = 8;

std::string percent(float share) {
    return formatNumber("%.0f", 100.0 * share) + "%";
}

bool isOn(const IndexedParameter* parameter) {
    return parameter && parameter->currentIndex() != 0;
}

}  // namespace

ChannelLinkParameter::ChannelLinkParameter(GenericPluginBase& plugin, std::string name)
    : GenericPropPluginParameter(plugin, std::move(name)), plugin_(plugin) {
    reserveTargets(kMostLinkers);
}

void ChannelLinkParameter::setSwitches(const IndexedParameter& centerSwitch,
                                       const IndexedParameter& lfeSwitch) {
    center_ = &centerSwitch;
    lfe_ = &lfeSwitch;
}

std::string ChannelLinkParameter::text(float value) const {
    std::string text = percent(2.0f * std::min(value, 0.5f));
    if (plugin_.channelLayout < kFirstSurroundLayout) return text;
    text += " Stereo";
    if (isOn(center_)) text += "+C";
    const float all = 2.0f * std::clamp(value - 0.5f, 0.0f, 0.5f);
    if (all > 0.0f) {
        text += ", " + percent(all) + " All";
        if (isOn(lfe_)) text += "+LFE";
    }
    return text;
}

std::string ChannelLinkParameter::text(float value, int maxLength) const {
    constexpr Replacement kReplacements[] = {{"+C", ""}, {"+LFE", ""}, {" Stereo", ""}, {" All", "A"},
                                             {"%", ""},  {" ", ""},    {"100,", ""}};
    std::string result = text(value);
    if (maxLength <= 0) return result;
    const auto limit = static_cast<std::size_t>(maxLength);
    for (const Replacement& replacement : kReplacements) {
        if (result.size() <= limit) return result;
        replaceAll(result, replacement);
    }
    return result.substr(0, limit);
}

std::optional<ChannelLinkParameter::Reading> ChannelLinkParameter::read(const std::string& text) {
    const std::size_t comma = text.find(',');
    const bool second = comma != std::string::npos;
    std::string_view rest = skipBlanks(std::string_view(text).substr(second ? comma + 1 : 0));
    const auto number = readNumber(rest);
    if (!number) return {};
    rest = skipBlanks(rest.substr(number->length));
    if (rest.starts_with('%')) rest = skipBlanks(rest.substr(1));
    return Reading{number->value, second || rest.starts_with('A') || rest.starts_with('a')};
}

bool ChannelLinkParameter::parseText(const std::string& text, float* out) const {
    const auto reading = read(text);
    if (!reading) return false;
    const double share = reading->percent * 0.01;
    *out = limit(static_cast<float>((reading->ofAll ? share + 1.0 : share) * 0.5));
    return true;
}

bool ChannelLinkParameter::exceedsRange(const std::string& text) const {
    const auto reading = read(text);
    return reading && (reading->percent < 0.0 || reading->percent > 100.0);
}

}  // namespace vanta
