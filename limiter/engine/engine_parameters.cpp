#include "limiter/engine/engine_parameters.hpp"

#include <string>

namespace vanta {

namespace {

void describe(FloatPluginParameter& parameter, const ParameterDescription& description) {
    parameter.setRange(description.minimum, description.maximum, description.defaultValue);
    parameter.display.curve = curveFunction(description.curve);
    parameter.display.inverseCurve = inverseCurveFunction(description.curve);
    parameter.display.curveOffset = description.curveOffset;
    parameter.display.curveScale = description.curveScale;
    parameter.display.displayOffset = description.displayOffset;
    parameter.display.displayScale = description.displayScale;
    parameter.display.format = description.format;
    parameter.display.unitText = description.unit;
}

void describe(IndexedParameter& parameter, const ParameterDescription& description) {
    parameter.setRange(static_cast<int>(description.minimum), static_cast<int>(description.maximum),
                       static_cast<int>(description.defaultValue));
    if (!description.labels.empty()) parameter.setLabels(description.labels);
    if (!description.mappedValues.empty()) parameter.setValueTable(description.mappedValues);
}

std::unique_ptr<AbstractPluginParameter> makeIndexed(GenericParameterOwner& owner, const std::string& name,
                                                     const ParameterDescription& description) {
    auto parameter = std::make_unique<PropPluginParameter<int>>(owner, name);
    describe(*parameter, description);
    return parameter;
}

std::unique_ptr<AbstractPluginParameter> makeFloat(GenericParameterOwner& owner, const std::string& name,
                                                   const EngineParameter& entry, ModulationMatrix& matrix) {
    const ParameterDescription& description = entry.description;
    std::unique_ptr<FloatPluginParameter> parameter;
    if (entry.target < 0) {
        parameter = std::make_unique<LimFloatPropPluginParameter>(owner, name);
    } else if (entry.kind == ElementKind::Filter) {
        parameter = std::make_unique<FilterFreqTargetParameter>(owner, name, matrix, entry.target,
                                                                description.defaultValue);
    } else {
        parameter = std::make_unique<ModulationTargetParameter>(owner, name, matrix, entry.target);
    }
    describe(*parameter, description);
    return parameter;
}

std::unique_ptr<AbstractPluginParameter> makeSlotField(GenericParameterOwner& owner,
                                                       const EngineParameter& entry, ModulationMatrix& matrix,
                                                       SlotField field) {
    auto parameter = std::make_unique<SlotFieldParameter>(owner, entry.name, matrix, entry.element, field);
    describe(*parameter, entry.description);
    return parameter;
}

}  // namespace

void SlotFieldParameter::applyValue(float value) {
    IndexedPluginParameter<int>::applyValue(value);
    const int index = engineValue(value);
    ModulationMatrix::Controller& controller = matrix_.controller();
    switch (field_) {
        case SlotField::Source:
            controller.setSource(slot_, index - 1);
            break;
        case SlotField::Target:
            controller.setTarget(slot_, index - 1);
            break;
        case SlotField::Bypassed:
            controller.setBypassed(slot_, index != 0);
            break;
        case SlotField::Inverted:
            controller.setInverted(slot_, index != 0);
            break;
        case SlotField::Level:
            break;
    }
}

EngineParameterSet::EngineParameterSet(GenericParameterOwner& owner, const std::string&,
                                       DynamicsEngine& engine, ElementKind kind)
    : PluginParameterSet(owner) {
    const std::size_t count = EngineTable::element(kind).parameters.size();
    for (std::size_t i = 0; i < count; ++i) {
        const auto position = static_cast<std::size_t>(engine.parameterCount());
        const EngineParameter& entry = engine.layout().parameters()[position];
        if (entry.description.isFloat()) {
            owned_.push_back(makeFloat(*this, entry.name, entry, engine.matrix()));
        } else if (kind == ElementKind::Slot) {
            owned_.push_back(makeSlotField(*this, entry, engine.matrix(), static_cast<SlotField>(i)));
        } else {
            owned_.push_back(makeIndexed(*this, entry.name, entry.description));
        }
    }
}

DynamicsEngine::Parameters::Parameters(DynamicsEngine& engine) : owner_(engine) {
    const auto entries = engine.layout().parameters();
    const auto makeCount = [&](int position) {
        auto count =
            std::make_unique<NumActiveParameter>(engine, entries[static_cast<std::size_t>(position)].name);
        describe(*count, entries[static_cast<std::size_t>(position)].description);
        return count;
    };
    numActiveInputs_ = makeCount(kNumActiveInputsPosition);
    numActiveMainSources_ = makeCount(kNumActiveMainSourcesPosition);
    addMainControls(engine.matrix());
    for (int position = kLookAheadStagesPosition; position <= kOutputSmartClippersPosition; ++position) {
        const EngineParameter& entry = entries[static_cast<std::size_t>(position)];
        stageCounts_.push_back(makeIndexed(engine, entry.name, entry.description));
    }
    const auto addList = [&](ElementKind kind) {
        const ElementDescription& description = EngineTable::element(kind);
        const int capacity = engine.layout().group(kind).capacity;
        lists_.push_back(std::make_unique<SetList>(engine, std::string(description.listName), capacity,
                                                   std::string(description.name), engine, kind));
    };
    for (const ElementDescription& element : EngineTable::elements()) addList(element.kind);
}

void DynamicsEngine::Parameters::addMainControls(ModulationMatrix& matrix) {
    for (int position = kMainThresholdPosition; position <= kCustom2Position; ++position) {
        const EngineParameter& entry = owner_.layout().parameters()[static_cast<std::size_t>(position)];
        mainControls_.push_back(makeFloat(owner_, entry.name, entry, matrix));
    }
}

NumActiveParameter& DynamicsEngine::Parameters::numActive(ElementKind kind) {
    return lists_[indexOf(kind) - indexOf(kFirstElement)]->numActive;
}

PropPluginParameter<int>& DynamicsEngine::Parameters::indexed(int position) const {
    return dynamic_cast<PropPluginParameter<int>&>(at(position));
}

void DynamicsEngine::Parameters::drive(int position, LimitedProperty<float>& cell) {
    dynamic_cast<LimFloatPropPluginParameter&>(at(position)).addTarget(cell);
}

void DynamicsEngine::Parameters::switchOff(int position, Property<bool>& enabled) {
    dynamic_cast<FilterFreqTargetParameter&>(at(position)).addSwitch(enabled);
}

}  // namespace vanta
