#pragma once

#include <span>
#include <string_view>

#include "limiter/styles/element_kind.hpp"
#include "limiter/styles/engine_curve.hpp"
#include "limiter/styles/target_range.hpp"

namespace vanta {

/// One parameter: either the base value of an input, or what sets a property.
struct ParameterDescription {
    enum class Type { Float, Indexed };

    constexpr bool isFloat() const { return type == Type::Float; }

    std::string_view name;  ///< follows the name and number of its element, if it has one
    Type type = Type::Float;
    float minimum = 0.0f;  ///< of the stored value, as are `maximum` and `defaultValue`
    float maximum = 1.0f;
    float defaultValue = 0.0f;
    EngineCurve curve = EngineCurve::Identity;
    float curveOffset = 0.0f;
    float curveScale = 1.0f;
    std::string_view input;             ///< the input whose base value this is; empty: it sets a property
    std::string_view labels;            ///< of an indexed value from 0, separated by commas; empty: numbers
    std::span<const int> mappedValues;  ///< what index i sets its property to; empty: i itself
    std::string_view format = "%.3f";   ///< printf format of the shown value
    std::string_view unit;
    float displayOffset = 0.0f;  ///< shown value: engine value * displayScale + displayOffset
    float displayScale = 1.0f;
};

/// A signal or control input of an element: a target of the modulation matrix.
struct InputDescription {
    std::string_view name;
    RangeId range;
};

/// One kind of element, or the slots.
struct ElementDescription {
    ElementKind kind;
    int capacity;                 ///< how many the parameter table holds
    std::string_view listName;    ///< "Peak Hold Sources"
    std::string_view name;        ///< "Peak Hold", in names of parameters
    std::string_view sourceName;  ///< "PeakHold", in names of sources
    std::string_view shortName;   ///< "PkH", in names of targets
    int outputCount;
    std::span<const InputDescription> inputs;          ///< in the order of their targets
    std::span<const ParameterDescription> parameters;  ///< in file order
};

/// One of the main controls: a parameter, a target and a source in one.
struct MainControlDescription {
    ParameterDescription parameter;
    ElementKind kind;
    RangeId range;
};

/// Position of an entry in a list of descriptions, -1 for none.
template <typename Entries>
constexpr int indexByName(const Entries& entries, std::string_view name) {
    int index = 0;
    for (const auto& entry : entries) {
        if (entry.name == name) return index;
        ++index;
    }
    return -1;
}

}  // namespace vanta
