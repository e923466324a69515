#include "plugin/parameters/float_display.hpp"

#include "plugin/parameters/float_plugin_parameter.hpp"
#include "plugin/parameters/number_text.hpp"
#include "plugin/parameters/parameter_units.hpp"

namespace vanta {

std::string FloatDisplay::text(float value) const {
    const float d = shown(value);
    std::string result = formatter ? formatter(d) : formatNumber(format, d);
    const std::string unitNow = currentUnitText();
    if (!unitNow.empty()) result += separator.value() + unitNow;
    return result;
}

void FloatDisplay::setUnit(const FloatPluginParameterUnit& newUnit) {
    unit = &newUnit;
    unitText = newUnit.text();
    newUnit.configure(*this);
}

void FloatDisplay::setUnit(const std::string& newUnitText) {
    unit = registeredUnit(newUnitText);
    unitText = newUnitText;
}

void FloatDisplay::setDisplayRange(float low, float high) {
    curveScale = (high - low) / (parameter->maximum() - parameter->minimum());
    curveOffset = low - parameter->minimum() * curveScale;
    displayScale = 1.0f;
    displayOffset = 0.0f;
}

void FloatDisplay::setPercentDisplay() {
    const float low = engineValue(parameter->minimum());
    const float high = engineValue(parameter->maximum());
    displayScale = 100.0f / (high - low);
    displayOffset = -displayScale * low;
}

}  // namespace vanta
