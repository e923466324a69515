#pragma once

#include <algorithm>
#include <type_traits>
#include <vector>

#include "plugin/parameters/float_plugin_parameter.hpp"
#include "plugin/parameters/indexed_plugin_parameter.hpp"
#include "wave/float_parameter.hpp"

namespace vanta {

/// Adds cells that `applyValue` sets to the engine value, after the listeners. The cells are not owned;
/// whoever rebuilds them removes the old ones. Layers of this class add several kinds of cells to a
/// parameter.
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
    static void drive(wave::FloatParameter& cell, float engineValue) { cell.setValue(engineValue, -1.0f); }

    std::vector<Cell*> targets_;
};

/// Drives smoothed values.
using FloatParamPluginParameter = GenericPropPluginParameter<wave::FloatParameter, FloatPluginParameter>;
/// Drives limited float cells.
using LimFloatPropPluginParameter = GenericPropPluginParameter<LimitedProperty<float>, FloatPluginParameter>;

/// Drives cells of the mapped value's own type.
template <typename T>
using OwnPropPluginParameter = GenericPropPluginParameter<Property<T>, IndexedPluginParameter<T>>;

/// What selectors and switches of the graph hold for a parameter of type `T`: they do not know enumerations.
template <typename T>
using PlainProperty = Property<std::conditional_t<std::is_same_v<T, int>, bool, int>>;

/// Drives cells with the mapped value: `Property<T>` and `Property<int>`, or `Property<bool>` for an `int`
/// parameter.
template <typename T>
class PropPluginParameter : public GenericPropPluginParameter<PlainProperty<T>, OwnPropPluginParameter<T>> {
    using Own = OwnPropPluginParameter<T>;
    using Other = GenericPropPluginParameter<PlainProperty<T>, Own>;

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
