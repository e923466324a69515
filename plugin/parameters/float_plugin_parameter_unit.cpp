#include "plugin/parameters/float_plugin_parameter_unit.hpp"

#include <algorithm>

#include "plugin/parameters/float_display.hpp"
#include "plugin/parameters/number_text.hpp"

namespace vanta {

const FloatPluginParameterUnit::Token* FloatPluginParameterUnit::find(std::string_view word) const {
    const auto found =
        std::ranges::find_if(tokens, [&](const Token& t) { return equalsIgnoringCase(t.token, word); });
    return found == tokens.end() ? nullptr : &*found;
}

bool FloatPluginParameterUnit::parseSpecial(const std::string& text, float* out) const {
    const auto shown = special ? special(text) : std::nullopt;
    if (shown) *out = *shown;
    return shown.has_value();
}

void FloatPluginParameterUnit::configure(FloatDisplay& display) const {
    if (attached) display.separator = "";
    if (!format.empty()) display.format = format;
    if (formatter) display.formatter = formatter;
    if (displayCurve) display.displayCurve = displayCurve;
    if (inverseDisplayCurve) display.inverseDisplayCurve = inverseDisplayCurve;
}

}  // namespace vanta
