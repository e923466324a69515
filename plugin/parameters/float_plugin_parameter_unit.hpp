#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vanta {

struct FloatDisplay;

/// A unit of measure, shared by many parameters. Units are singletons that never change once they are made.
class FloatPluginParameterUnit {
public:
    /// A word that may stand behind a number. The shown value is convert(factor * number).
    struct Token {
        std::string token;
        float factor = 1.0f;
        float (*convert)(float) = nullptr;  ///< null is the identity
    };

    FloatPluginParameterUnit(const FloatPluginParameterUnit&) = delete;
    FloatPluginParameterUnit& operator=(const FloatPluginParameterUnit&) = delete;
    virtual ~FloatPluginParameterUnit() = default;

    /// Reads a text that does not begin with a number, whole. `out` gets the shown value.
    virtual bool parseSpecial(const std::string& text, float* out) const;
    /// Adjusts a display that takes up this unit.
    virtual void configure(FloatDisplay& display) const;

    /// Without regard to case. Null if the unit has no such word.
    const Token* find(std::string_view word) const;
    /// The word that is printed.
    const std::string& text() const { return tokens_.front().token; }

    /// Looks among the registered units, by the printed word and without regard to case. Null if there is
    /// none.
    static const FloatPluginParameterUnit* registered(std::string_view text);

protected:
    explicit FloatPluginParameterUnit(std::vector<Token> tokens) : tokens_(std::move(tokens)) {}

private:
    std::vector<Token> tokens_;  ///< the first is the unit's own text
};

}  // namespace vanta
