#include "limiter/engine/engine_parameters.hpp"

#include <string>

namespace vanta {

namespace {

/// Stored values at which the filters of a Filter Set are out of the path.
constexpr float kLowPassOff = 1.0f;
constexpr float kHighPassOff = 0.0f;
constexpr int kHighPassInput = 1;

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
        const float off = description.input == kHighPassInput ? kHighPassOff : kLowPassOff;
        parameter = std::make_unique<FilterFreqTargetParameter>(owner, name, matrix, entry.target, off);
    } else {
        parameter = std::make_unique<ModulationTargetParameter>(owner, name, matrix, entry.target);
    }
    describe(*parameter, description);
    return parameter;
}

}  // namespace

void SlotFieldParameter::applyValue(float value) {
    IndexedPluginParameter<int>::applyValue(value);
    const int index = engineValue(value);
    ModulationMatrix::Controller& controller = matrix.controller();
    switch (field) {
        case SlotField::Source:
            controller.setSource(slot, index - 1);
            break;
        case SlotField::Target:
            controller.setTarget(slot, index - 1);
            break;
        case SlotField::Bypassed:
            controller.setBypassed(slot, index != 0);
            break;
        case SlotField::Inverted:
            controller.setInverted(slot, index != 0);
            break;
        case SlotField::Level:
            break;
    }
}

EngineParameterSet::EngineParameterSet(GenericParameterOwner& owner, const std::string& name,
                                       DynamicsEngine& engine, ElementKind kind)
    : PluginParameterSet(owner) {
    const auto descriptions = elementDescription(kind).parameters;
    for (std::size_t i = 0; i < descriptions.size(); ++i) {
        const auto position = static_cast<std::size_t>(engine.parameterCount());
        const EngineParameter& entry = engine.layout().parameters()[position];
        const std::string fullName = name + std::string(descriptions[i].suffix);
        // The limits of sources and targets are those of the whole table.
        if (entry.description.isFloat()) {
            owned.push_back(makeFloat(*this, fullName, entry, engine.matrix()));
        } else if (kind == ElementKind::Slot) {
            addSlotField(fullName, engine.matrix(), entry.element, static_cast<SlotField>(i));
            describe(static_cast<IndexedParameter&>(*owned.back()), entry.description);
        } else {
            owned.push_back(makeIndexed(*this, fullName, entry.description));
        }
    }
}

void EngineParameterSet::addSlotField(const std::string& name, ModulationMatrix& matrix, int slot,
                                      SlotField field) {
    owned.push_back(std::make_unique<SlotFieldParameter>(*this, name, matrix, slot, field));
}

DynamicsEngine::Parameters::Parameters(DynamicsEngine& engine) : owner(engine) {
    const auto entries = engine.layout().parameters();
    const auto makeCount = [&](int position) {
        auto count =
            std::make_unique<NumActiveParameter>(engine, entries[static_cast<std::size_t>(position)].name);
        describe(*count, entries[static_cast<std::size_t>(position)].description);
        return count;
    };
    numActiveInputs = makeCount(kNumActiveInputsPosition);
    numActiveMainSources = makeCount(kNumActiveMainSourcesPosition);
    addMainControls(engine.matrix());
    for (int position = kLookAheadStagesPosition; position <= kOutputSmartClippersPosition; ++position) {
        const EngineParameter& entry = entries[static_cast<std::size_t>(position)];
        stageCounts.push_back(makeIndexed(engine, entry.name, entry.description));
    }
    const auto addList = [&](ElementKind kind) {
        const ElementDescription& description = elementDescription(kind);
        const int capacity = engine.layout().group(kind).capacity;
        lists.push_back(std::make_unique<SetList>(engine, std::string(description.listName), capacity,
                                                  std::string(description.prefix), engine, kind));
    };
    for (ElementKind kind = kFirstElement; kind <= kLastElement; kind = next(kind)) addList(kind);
    addList(ElementKind::Slot);
}

void DynamicsEngine::Parameters::addMainControls(ModulationMatrix& matrix) {
    for (int position = kMainThresholdPosition; position <= kCustom2Position; ++position) {
        const EngineParameter& entry = owner.layout().parameters()[static_cast<std::size_t>(position)];
        mainControls.push_back(makeFloat(owner, entry.name, entry, matrix));
    }
}

NumActiveParameter& DynamicsEngine::Parameters::numActive(ElementKind kind) {
    const std::size_t list =
        kind == ElementKind::Slot ? lists.size() - 1 : indexOf(kind) - indexOf(kFirstElement);
    return lists[list]->numActive;
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
