#pragma once

#include "limiter/styles/element_description.hpp"

namespace vanta {

/// The forms that parameters of the engine take. A float sets the input of its own name, unless
/// `withInput` says otherwise.
struct ParameterForms {
    using Description = ParameterDescription;

    static constexpr float kLog2Of5 = 2.321928094887362f;
    static constexpr float kLog2Of30000 = 14.872674880270605f;
    static constexpr float kLongestMs = 50.0f;

    static constexpr Description number(std::string_view name, float minimum, float maximum,
                                        float defaultValue, std::string_view unit = {}) {
        Description result;
        result.name = name;
        result.minimum = minimum;
        result.maximum = maximum;
        result.defaultValue = defaultValue;
        result.input = name;
        result.unit = unit;
        return result;
    }

    static constexpr Description fraction(std::string_view name, float defaultValue) {
        return number(name, 0, 1, defaultValue);
    }

    static constexpr Description curved(std::string_view name, EngineCurve curve, float scale,
                                        std::string_view unit, float defaultValue = 0) {
        Description result = fraction(name, defaultValue);
        result.curve = curve;
        result.curveScale = scale;
        result.unit = unit;
        return result;
    }

    static constexpr Description milliseconds(std::string_view name) {
        return curved(name, EngineCurve::Time, kLongestMs, "ms");
    }

    static constexpr Description smoothing(std::string_view name) {
        Description result = curved(name, EngineCurve::Time, 1, "sec");
        result.minimum = -1;
        return result;
    }

    static constexpr Description shape(std::string_view name) {
        Description result = fraction(name, 1);
        result.unit = "% Exponential";
        result.displayScale = 100;
        return result;
    }

    /// The engine value is log2 of the frequency.
    static constexpr Description frequency(std::string_view name, float defaultValue) {
        Description result = fraction(name, defaultValue);
        result.curveOffset = kLog2Of5;
        result.curveScale = kLog2Of30000 - kLog2Of5;
        return result;
    }

    /// The engine value of 1:1 is `offset`, which is 1 for a ratio and 0 for what a ratio has above 1.
    static constexpr Description ratio(std::string_view name, float offset) {
        Description result = curved(name, EngineCurve::Ratio, 99, ":1");
        result.curveOffset = offset;
        result.displayOffset = 1 - offset;
        result.format = "%.2f";
        return result;
    }

    static constexpr Description stereoLink(std::string_view name) {
        Description result = fraction(name, 1);
        result.curveOffset = -1;
        result.curveScale = 2;
        result.displayOffset = 50;
        result.displayScale = 50;
        result.unit = "%";
        return result;
    }

    static constexpr Description precise(Description result) {
        result.format = "%.5f";
        return result;
    }

    /// Sets another input than that of its name, or with an empty name a property.
    static constexpr Description withInput(std::string_view input, Description result) {
        result.input = input;
        return result;
    }

    static constexpr Description integer(std::string_view name, float maximum) {
        Description result;
        result.name = name;
        result.type = Description::Type::Indexed;
        result.maximum = maximum;
        return result;
    }

    static constexpr Description choice(std::string_view name, std::string_view labels,
                                        float defaultIndex = 0, std::span<const int> mappedValues = {}) {
        float maximum = 0;
        for (const char c : labels) maximum += c == ',' ? 1.0f : 0.0f;
        Description result = integer(name, maximum);
        result.labels = labels;
        result.defaultValue = defaultIndex;
        result.mappedValues = mappedValues;
        return result;
    }
};

}  // namespace vanta
