#pragma once

#include <array>
#include <memory>
#include <span>
#include <vector>

#include "limiter/engine/dynamics_engine.hpp"
#include "limiter/modulation/modulation_matrix.hpp"
#include "limiter/styles/engine_layout.hpp"
#include "plugin/parameters/parameter_set_list.hpp"
#include "plugin/parameters/plugin_parameter_set.hpp"
#include "plugin/parameters/prop_plugin_parameter.hpp"

namespace vanta {

/// The value behind an element's control input or a slot's level.
class ModulationTargetParameter : public FloatPluginParameter {
public:
    ModulationTargetParameter(GenericParameterOwner& owner, const std::string& name,
                              ModulationMatrix& modulation, int targetIndex)
        : FloatPluginParameter(owner, name), matrix(modulation), target(targetIndex) {}

    void applyValue(float value) override {
        FloatPluginParameter::applyValue(value);
        matrix.setBaseValue(target, engineValue(value));
    }

private:
    ModulationMatrix& matrix;
    int target;
};

/// The corner of a Filter Set: at the end of its range the filter is switched off.
class FilterFreqTargetParameter final : public ModulationTargetParameter {
public:
    FilterFreqTargetParameter(GenericParameterOwner& owner, const std::string& name,
                              ModulationMatrix& modulation, int targetIndex, float valueOfOff)
        : ModulationTargetParameter(owner, name, modulation, targetIndex), offValue(valueOfOff) {}

    void addSwitch(Property<bool>& enabled) { switches.push_back(&enabled); }
    void applyValue(float value) override {
        ModulationTargetParameter::applyValue(value);
        for (Property<bool>* enabled : switches) *enabled = value != offValue;
    }

private:
    float offValue;
    std::vector<Property<bool>*> switches;
};

/// One field of a slot's connection.
class SlotFieldParameter final : public IndexedPluginParameter<int> {
public:
    SlotFieldParameter(GenericParameterOwner& owner, const std::string& name, ModulationMatrix& modulation,
                       int slotIndex, SlotField slotField)
        : IndexedPluginParameter<int>(owner, name), matrix(modulation), slot(slotIndex), field(slotField) {}

    void applyValue(float value) override;

private:
    ModulationMatrix& matrix;
    int slot;
    SlotField field;
};

/// The parameters of one element or slot.
class EngineParameterSet final : public PluginParameterSet {
public:
    EngineParameterSet(GenericParameterOwner& owner, const std::string& name, DynamicsEngine& engine,
                       ElementKind kind);

private:
    void addSlotField(const std::string& name, ModulationMatrix& matrix, int slot, SlotField field);

    std::vector<std::unique_ptr<AbstractPluginParameter>> owned;
};

/// The table of the engine's 749 values as parameters, in the order of a style record.
class DynamicsEngine::Parameters {
public:
    explicit Parameters(DynamicsEngine& engine);

    AbstractPluginParameter& at(int position) const { return *owner.parameterAt(position); }

    // Wiring. An indexed value drives cells with its mapped value.
    void drive(int position, Property<int>& cell) { indexed(position).addTarget(cell); }
    void drive(int position, Property<bool>& cell) { indexed(position).addTarget(cell); }
    void drive(int position, LimitedProperty<int>& cell) { indexed(position).addListener(cell); }
    void drive(int position, LimitedProperty<float>& cell);
    void release(int position, Property<int>& cell) { indexed(position).removeTarget(cell); }
    void switchOff(int position, Property<bool>& enabled);
    NumActiveParameter& numActive(ElementKind kind);

private:
    using SetList = ParameterSetList<EngineParameterSet>;

    PropPluginParameter<int>& indexed(int position) const;
    void addMainControls(ModulationMatrix& matrix);

    DynamicsEngine& owner;
    std::unique_ptr<NumActiveParameter> numActiveInputs;
    std::unique_ptr<NumActiveParameter> numActiveMainSources;
    std::vector<std::unique_ptr<AbstractPluginParameter>> mainControls;
    std::vector<std::unique_ptr<AbstractPluginParameter>> stageCounts;
    std::vector<std::unique_ptr<SetList>> lists;  ///< Filter to Vca, then the slots
};

}  // namespace vanta
