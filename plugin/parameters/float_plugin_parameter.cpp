#include "plugin/parameters/float_plugin_parameter.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "foundation/numbers.hpp"
#include "plugin/parameters/number_text.hpp"

namespace vanta {

FloatPluginParameter::FloatPluginParameter(GenericParameterOwner& parameterOwner, std::string parameterName)
    : TypedPluginParameter(parameterOwner, std::move(parameterName), Kind::Float) {}

void FloatPluginParameter::setRange(float low, float high, float initial) {
    minimum_ = low;
    maximum_ = high;
    default_ = initial;
    value_.store(initial, std::memory_order_relaxed);
}

float FloatPluginParameter::normalize(float value) const {
    return maximum_ > minimum_ ? (value - minimum_) / (maximum_ - minimum_) : 0.0f;
}

float FloatPluginParameter::denormalize(float normal) const {
    return (maximum_ - minimum_) * normal + minimum_;
}

float FloatPluginParameter::limit(float value) const {
    if (value < minimum_) return minimum_;
    return value > maximum_ ? maximum_ : value;
}

void FloatPluginParameter::setValue(float value, int flags) {
    if (std::isnan(value)) return;
    const float limited = limit(value);
    if (nearlyEqual(limited, this->value())) return;
    value_.store(limited, std::memory_order_relaxed);
    owner().parameterChanged(index(), limited, flags);
}

std::optional<FloatPluginParameter::Reading> FloatPluginParameter::readSpecial(std::string_view text) const {
    float shown = 0.0f;
    const FloatPluginParameterUnit* unit = display.currentUnit();
    if (!unit || !unit->parseSpecial(std::string(text), &shown)) return {};
    return Reading{shown, false};
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

    double shown = number->value;
    if (!word.empty()) {
        const FloatPluginParameterUnit* unit = display.currentUnit();
        if (!unit) {
            if (!equalsIgnoringCase(word, display.unitText)) return {};
        } else {
            const auto* token = unit->find(word);
            if (!token) return {};
            shown *= token->factor;
            if (token->convert) return Reading{token->convert(static_cast<float>(shown)), false};
        }
    }
    // Who types 3 for a level that is never positive means -3. A gain factor says its sign itself.
    const bool neverPositive = std::max(toDisplay(minimum_), toDisplay(maximum_)) <= 0.0f;
    return Reading{neverPositive ? -std::abs(shown) : shown, false};
}

bool FloatPluginParameter::parseText(const std::string& text, float* out) const {
    const auto reading = read(text);
    if (!reading) return false;
    float value = 0.0f;
    if (reading->isShare) {
        value = denormalize(static_cast<float>(reading->number));
    } else {
        const auto [low, high] = std::minmax({toDisplay(minimum_), toDisplay(maximum_)});
        value = fromDisplay(std::clamp(static_cast<float>(reading->number), low, high));
    }
    if (std::isnan(value)) return false;
    *out = limit(value);
    return true;
}

bool FloatPluginParameter::exceedsRange(const std::string& text) const {
    const auto reading = read(text);
    if (!reading) return false;
    const auto [low, high] = std::minmax({toDisplay(minimum_), toDisplay(maximum_)});
    const double lowest = reading->isShare ? 0.0 : low;
    const double highest = reading->isShare ? 1.0 : high;
    // The texts of the limits, rounded as they are printed, are within.
    const double tolerance = 1e-5 * (highest - lowest);
    return reading->number < lowest - tolerance || reading->number > highest + tolerance;
}

}  // namespace vanta
