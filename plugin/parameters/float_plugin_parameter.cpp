#include "plugin/parameters/float_plugin_parameter.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "plugin/parameters/number_text.hpp"

namespace vanta {

float FloatPluginParameter::normalize(float value) const {
    return maximum() > minimum() ? (value - minimum()) / (maximum() - minimum()) : 0.0f;
}

float FloatPluginParameter::denormalize(float normal) const {
    return (maximum() - minimum()) * normal + minimum();
}

std::pair<float, float> FloatPluginParameter::shownRange() const {
    return std::minmax({toDisplay(minimum()), toDisplay(maximum())});
}

std::optional<FloatPluginParameter::Reading> FloatPluginParameter::read(const std::string& text) const {
    std::string points = text;
    std::replace(points.begin(), points.end(), ',', '.');
    std::string_view rest = skipBlanks(points);
    const std::string& prefix = display.prefix.value();
    if (!prefix.empty() && rest.starts_with(prefix)) rest = skipBlanks(rest.substr(prefix.size()));

    const auto number = readNumber(rest);
    if (!number) return readSpecial(rest);
    rest = skipBlanks(rest.substr(number->length));
    const std::string_view word = rest.substr(0, rest.find_first_of(" \t"));
    if (word == "%") return Reading{number->value * 0.01, true};
    return readWithUnit(number->value, word);
}

std::optional<FloatPluginParameter::Reading> FloatPluginParameter::readSpecial(std::string_view text) const {
    float shown = 0.0f;
    const FloatPluginParameterUnit* unit = display.currentUnit();
    if (!unit || !unit->parseSpecial(std::string(text), &shown)) return {};
    return Reading{shown, false};
}

std::optional<FloatPluginParameter::Reading> FloatPluginParameter::readWithUnit(double number,
                                                                                std::string_view word) const {
    if (const FloatPluginParameterUnit* unit = display.currentUnit(); unit && !word.empty()) {
        const auto* token = unit->find(word);
        if (!token) return {};
        number *= token->factor;
        if (token->convert) return Reading{token->convert(static_cast<float>(number)), false};
    } else if (!word.empty() && !equalsIgnoringCase(word, display.unitText)) {
        return {};
    }
    // A user who types 3 for a level that is never positive means -3. A gain factor has its sign already.
    const bool neverPositive = shownRange().second <= 0.0f;
    return Reading{neverPositive ? -std::abs(number) : number, false};
}

bool FloatPluginParameter::parseText(const std::string& text, float* out) const {
    const auto reading = read(text);
    if (!reading) return false;
    const auto number = static_cast<float>(reading->number);
    const auto [low, high] = shownRange();
    const float value = reading->isShare ? denormalize(number) : fromDisplay(std::clamp(number, low, high));
    if (std::isnan(value)) return false;
    *out = limit(value);
    return true;
}

bool FloatPluginParameter::exceedsRange(const std::string& text) const {
    const auto reading = read(text);
    if (!reading) return false;
    const auto [low, high] = shownRange();
    const double lowest = reading->isShare ? 0.0 : low;
    const double highest = reading->isShare ? 1.0 : high;
    // The printed texts of the limits are rounded and must still count as inside.
    const double tolerance = 1e-5 * (highest - lowest);
    return reading->number < lowest - tolerance || reading->number > highest + tolerance;
}

}  // namespace vanta
