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
    ModulationTargetParameter(GenericParameterOwner& owner, const std::string& name, ModulationMatrix& matrix,
                              int target)
        : FloatPluginParameter(owner, name), matrix_(matrix), target_(target) {}

    void applyValue(float value) override {
        FloatPluginParameter::applyValue(value);
        matrix_.setBaseValue(target_, engineValue(value));
    }

private:
    ModulationMatrix& matrix_;
    int target_;
};

/// The corner of a Filter Set: at its default, the far end of its range, the filter is out of the path.
class FilterFreqTargetParameter final : public ModulationTargetParameter {
public:
    FilterFreqTargetParameter(GenericParameterOwner& owner, const std::string& name, ModulationMatrix& matrix,
                              int target, float offValue)
        : ModulationTargetParameter(owner, name, matrix, target), offValue_(offValue) {}

    void addSwitch(Property<bool>& enabled) { switches_.push_back(&enabled); }
    void applyValue(float value) override {
        ModulationTargetParameter::applyValue(value);
        for (Property<bool>* enabled : switches_) *enabled = value != offValue_;
    }

private:
    float offValue_;
    std::vector<Property<bool>*> switches_;
};

/// One field of a slot's connection.
class SlotFieldParameter final : public IndexedPluginParameter<int> {
public:
    SlotFieldParameter(GenericParameterOwner& owner, const std::string& name, ModulationMatrix& matrix,
                       int slot, SlotField field)
        : IndexedPluginParameter<int>(owner, name), matrix_(matrix), slot_(slot), field_(field) {}

    void applyValue(float value) override;

private:
    ModulationMatrix& matrix_;
    int slot_;
    SlotField field_;
};

/// The parameters of one element or slot, the next ones of the engine's layout. Their names are those of the
/// layout.
class EngineParameterSet final : public PluginParameterSet {
public:
    EngineParameterSet(GenericParameterOwner& owner, const std::string& name, DynamicsEngine& engine,
                       ElementKind kind);

private:
    std::vector<std::unique_ptr<AbstractPluginParameter>> owned_;
};

/// The table of the engine's 749 values as parameters, in the order of a style record.
class DynamicsEngine::Parameters {
public:
    explicit Parameters(DynamicsEngine& engine);

    AbstractPluginParameter& at(int position) const { return *owner_.parameterAt(position); }

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

    DynamicsEngine& owner_;
    std::unique_ptr<NumActiveParameter> numActiveInputs_;
    std::unique_ptr<NumActiveParameter> numActiveMainSources_;
    std::vector<std::unique_ptr<AbstractPluginParameter>> mainControls_;
    std::vector<std::unique_ptr<AbstractPluginParameter>> stageCounts_;
    std::vector<std::unique_ptr<SetList>> lists_;  ///< Filter to Slot
};

}  // namespace vanta
