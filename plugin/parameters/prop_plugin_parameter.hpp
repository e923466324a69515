#pragma once

#include <algorithm>
#include <type_traits>
#include <vector>

#include "plugin/parameters/float_plugin_parameter.hpp"
#include "plugin/parameters/indexed_plugin_parameter.hpp"
#include "wave/float_parameter.hpp"

namespace vanta {

/// Adds cells that `applyValue` sets to the engine value, behind the listeners. The cells are not owned; what
/// rebuilds them removes the old ones. Layers of this class add kinds of cells to one parameter.
template <typename Cell, typename Parameter>
class GenericPropPluginParameter : public Parameter {
public:
    using Parameter::Parameter;

    void addTarget(Cell& cell) { targets_.push_back(&cell); }
    void removeTarget(const Cell& cell) { std::erase(targets_, &cell); }
    /// Keeps the memory, so that the audio thread may clear and add again.
    void clearTargets() { targets_.clear(); }
    void reserveTargets(std::size_t count) { targets_.reserve(count); }

    VANTA_REALTIME void applyValue(float value) override {
        Parameter::applyValue(value);
        const auto engineValue = this->engineValue(value);
        for (Cell* cell : targets_) drive(*cell, engineValue);
    }

private:
    template <typename T, typename V>
    static void drive(Property<T>& cell, V engineValue) {
        cell.assign(static_cast<T>(engineValue));
    }
    static void drive(LimitedProperty<float>& cell, float engineValue) { cell.assign(engineValue); }
    // A negative time asks for the smoothing that fits the distance.
    static void drive(FloatParameter& cell, float engineValue) { cell.setValue(engineValue, -1.0f); }

    std::vector<Cell*> targets_;
};

/// Drives smoothed values.
using FloatParamPluginParameter = GenericPropPluginParameter<FloatParameter, FloatPluginParameter>;
/// Drives limited float cells.
using LimFloatPropPluginParameter = GenericPropPluginParameter<LimitedProperty<float>, FloatPluginParameter>;

/// Drives cells with the mapped value. Selectors and switches of the graph know no enumerations, so besides
/// `Property<T>` the targets may be `Property<int>`, and for an `int` parameter `Property<bool>`.
template <typename T>
class PropPluginParameter
    : public GenericPropPluginParameter<Property<std::conditional_t<std::is_same_v<T, int>, bool, int>>,
                                        GenericPropPluginParameter<Property<T>, IndexedPluginParameter<T>>> {
    using Own = GenericPropPluginParameter<Property<T>, IndexedPluginParameter<T>>;
    using Other =
        GenericPropPluginParameter<Property<std::conditional_t<std::is_same_v<T, int>, bool, int>>, Own>;

public:
    using Other::addTarget;
    using Other::Other;
    using Other::removeTarget;
    using Own::addTarget;
    using Own::removeTarget;
    void clearTargets() {
        Own::clearTargets();
        Other::clearTargets();
    }
};

}  // namespace vanta
