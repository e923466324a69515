#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "plugin/parameters/float_display.hpp"
#include "plugin/parameters/ranged_parameter.hpp"
#include "plugin/parameters/typed_plugin_parameter.hpp"

namespace vanta {

/// A continuous parameter.
class FloatPluginParameter : public TypedPluginParameter<float, RangedParameter<float>> {
public:
    using TypedPluginParameter::TypedPluginParameter;

    /// What reaches the audio code for the own number `value`.
    VANTA_REALTIME float engineValue(float value) const { return display.engineValue(value); }
    float fromDisplay(float shown) const override { return display.fromShown(shown); }
    float toDisplay(float value) const override { return display.shown(value); }
    float normalize(float value) const override;
    float denormalize(float normal) const override;
    /// Takes a number with or without a unit, "50%" as a share of the range, and what only the unit
    /// understands, such as a note name. Limits it to the range. On false `out` keeps its value.
    bool parseText(const std::string& text, float* out) const override;
    bool exceedsRange(const std::string& text) const override;
    using AbstractPluginParameter::text;
    std::string text(float value) const override { return display.text(value); }
    bool isContinuous() const override { return true; }
    VANTA_REALTIME void applyValue(float value) override { tellListeners(engineValue(value)); }

    FloatDisplay display{*this};

private:
    /// A text read as a number, before any limit.
    struct Reading {
        double number;
        bool isShare;  ///< of the parameter's range, 0 to 1; else the shown value
    };
    std::optional<Reading> read(const std::string& text) const;
    std::optional<Reading> readSpecial(std::string_view text) const;
    std::optional<Reading> readWithUnit(double number, std::string_view word) const;
    /// The shown values of the ends of the range, the lower one first.
    std::pair<float, float> shownRange() const;
};

}  // namespace vanta
