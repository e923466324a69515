#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vanta {

struct FloatDisplay;
enum class ParameterUnit;

/// A unit of measure, shared by many parameters: one row of the table in parameter_units.cpp. What a row
/// leaves empty stays as the display has it.
struct FloatPluginParameterUnit {
    /// A word that may follow a number. The shown value is convert(factor * number).
    struct Token {
        std::string_view token;
        float factor = 1.0f;
        float (*convert)(float) = nullptr;  ///< null is the identity
    };

    ParameterUnit id;
    std::span<const Token> tokens;              ///< the first is the unit's own text
    bool registered = false;                    ///< known by its text alone, see registeredUnit
    bool attached = false;                      ///< no blank between number and unit: "50%"
    std::string_view format = {};               ///< how numbers print, see formatNumber
    std::string (*formatter)(float) = nullptr;  ///< prints the shown value, in place of `format`
    float (*displayCurve)(float) = nullptr;     ///< from the scaled engine value to the shown value
    float (*inverseDisplayCurve)(float) = nullptr;
    /// Reads a whole text that does not begin with a number. Result: the shown value.
    std::optional<float> (*special)(std::string_view text) = nullptr;

    /// The word that is printed.
    std::string_view text() const { return tokens.front().token; }
    /// Without regard to case. Null if the unit has no such word.
    const Token* find(std::string_view word) const;
    /// Reads a text that does not begin with a number. `out` gets the shown value.
    bool parseSpecial(const std::string& text, float* out) const;
    /// Adjusts a display that takes up this unit.
    void configure(FloatDisplay& display) const;
};

}  // namespace vanta
