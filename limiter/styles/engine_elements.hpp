#pragma once

#include <span>
#include <string_view>

#include "limiter/styles/element_kind.hpp"
#include "limiter/styles/engine_curve.hpp"
#include "limiter/styles/engine_range.hpp"

namespace vanta {

/// One parameter of a set. Every float with an `input` is the base value of that input of its element;
/// everything else drives a property of the element.
struct ParameterDescription {
    enum class Type { Float, Indexed };

    bool isFloat() const { return type == Type::Float; }

    std::string_view suffix;  ///< the full name is the set's prefix, its number from 1 and this
    Type type = Type::Float;
    float minimum = 0.0f;  ///< of the stored value, as are `maximum` and `defaultValue`
    float maximum = 1.0f;
    float defaultValue = 0.0f;
    EngineCurve curve = EngineCurve::Identity;
    float curveOffset = 0.0f;
    float curveScale = 1.0f;
    int input = -1;                     ///< of the element's inputs the one that this sets; -1 for none
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
    std::string_view listName;    ///< "Detectors"
    std::string_view prefix;      ///< "Detector ", of parameter names
    std::string_view sourceName;  ///< "Detector ", of source names
    std::string_view shortName;   ///< "Det ", of target names
    int outputCount = 1;
    std::span<const InputDescription> inputs;
    std::span<const ParameterDescription> parameters;  ///< in file order
};

/// `kind` is Filter to Vca, or Slot.
const ElementDescription& elementDescription(ElementKind kind);

/// The six main controls. Control i is target i; its source is the one behind the two audio inputs.
struct MainControlDescription {
    ParameterDescription parameter;  ///< `suffix` is the full name, `input` 0
    ElementKind kind;
    RangeId range;
};
std::span<const MainControlDescription> mainControls();

/// What the owner of the engine must know ahead of the audio thread: how many look-ahead stages, Convolvers
/// and SmartClippers a style's output passes through. `suffix` is the full name.
std::span<const ParameterDescription> stageCounts();

}  // namespace vanta
