#pragma once

#include <functional>
#include <string>

#include "foundation/property.hpp"
#include "foundation/realtime.hpp"
#include "plugin/parameters/float_plugin_parameter_unit.hpp"

namespace vanta {

class FloatPluginParameter;

/// All conversion between a float parameter's own number v, the engine value e that reaches the audio code,
/// and the shown value d that a user reads and types:
///   e = curveOffset + curve(v) * curveScale
///   d = displayCurve(displayScale * e + displayOffset)
/// Everything here is set while the parameter is built and stays as it is from then on.
struct FloatDisplay {
    using Curve = float (*)(float);

    explicit FloatDisplay(FloatPluginParameter& owner) : parameter(&owner) {}
    FloatDisplay(const FloatDisplay&) = delete;
    FloatDisplay& operator=(const FloatDisplay&) = delete;

    VANTA_REALTIME float engineValue(float value) const { return curveOffset + curve(value) * curveScale; }
    float shown(float value) const { return displayCurve(displayScale * engineValue(value) + displayOffset); }
    /// The own number of a shown value.
    float fromShown(float d) const {
        return inverseCurve(((inverseDisplayCurve(d) - displayOffset) / displayScale - curveOffset) /
                            curveScale);
    }
    std::string text(float value) const;

    /// The current unit; null if it is only a text. Any thread.
    const FloatPluginParameterUnit* currentUnit() const { return unitChoice ? &unitChoice() : unit; }
    /// What is printed after a number at present. Any thread.
    std::string currentUnitText() const { return unitChoice ? std::string(unitChoice().text()) : unitText; }

    /// Takes up the unit and lets it adjust this display, its `format` included.
    void setUnit(const FloatPluginParameterUnit& newUnit);
    /// Takes a text as unit, with the registered unit of that text if there is one. Adjusts nothing else.
    void setUnit(const std::string& newUnitText);
    /// Makes the parameter's range show as `low` to `high`.
    void setDisplayRange(float low, float high);
    /// Makes the parameter's range show as 0 to 100.
    void setPercentDisplay();

    static float identity(float x) { return x; }

    Property<std::string> separator{nullptr, " "};  ///< between number and unit
    Property<std::string> prefix{nullptr, ""};      ///< a typed text may start with it
    std::string format = "%.3f";                    ///< see formatNumber
    Curve displayCurve = identity;
    Curve inverseDisplayCurve = identity;
    float displayOffset = 0.0f;
    float displayScale = 1.0f;
    std::string unitText;                         ///< printed after the number
    std::function<std::string(float)> formatter;  ///< prints the shown value in place of `format` when set
    Curve curve = identity;
    Curve inverseCurve = identity;
    float curveOffset = 0.0f;
    FloatPluginParameter* parameter;
    float curveScale = 1.0f;
    const FloatPluginParameterUnit* unit = nullptr;
    /// Replaces `unit` and `unitText` where the unit depends on another parameter. Called for every text that
    /// is printed or read, as one thread may do so while another sets that parameter.
    std::function<const FloatPluginParameterUnit&()> unitChoice;
};

}  // namespace vanta
