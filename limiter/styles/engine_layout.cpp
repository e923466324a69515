#include "limiter/styles/engine_layout.hpp"

#include <fmt/format.h>

namespace vanta {
namespace {

using Role = EngineParameter::Role;

std::vector<std::string> splitLabels(std::string_view labels) {
    std::vector<std::string> result;
    while (!labels.empty()) result.emplace_back(takeName(labels));
    return result;
}

ParameterDescription countDescription(int maximum, int defaultValue) {
    ParameterDescription result;
    result.type = ParameterDescription::Type::Indexed;
    result.maximum = static_cast<float>(maximum);
    result.defaultValue = static_cast<float>(defaultValue);
    return result;
}

template <typename Entries>
std::optional<int> findByName(const Entries& entries, std::string_view name) {
    const int index = indexByName(entries, name);
    return index < 0 ? std::nullopt : std::optional(index);
}

}  // namespace

EngineLayout::EngineLayout(const DynamicsEngineConfiguration& configuration)
    : config_(configuration), rangeTable_(engineRanges(configuration)) {
    addNumActive("Inputs", ElementKind::Input, 1, 1);
    addMainControls();
    for (ElementKind kind = kFirstElement; kind <= ElementKind::Slot; kind = next(kind)) addElements(kind);
    completeSlotLabels();
}

void EngineLayout::addMainControls() {
    const auto& controls = EngineTable::kMainControls;
    const int count = static_cast<int>(controls.size());
    addNumActive("Main Sources", ElementKind::MainThreshold, count, count);
    sourceTable_.push_back({"Audio Input", ElementKind::Input, 0, 0, {}});
    sourceTable_.push_back({"Trigger Input", ElementKind::Input, 1, 0, {}});
    for (int i = 0; i < count; ++i) {
        const MainControlDescription& control = controls[static_cast<std::size_t>(i)];
        const std::string name(control.parameter.name);
        const int element = control.kind == ElementKind::Custom ? i - 4 : 0;
        addParameter(name, control.parameter, Role::MainControl, control.kind, element, i);
        sourceTable_.push_back({name, control.kind, element, 0, {}});
        targetTable_.push_back({name, control.kind, element, 0, control.range});
    }
    targetTable_.push_back({"Output", ElementKind::Output, 0, 0, RangeId::Audio});
    for (const ParameterDescription& description : EngineTable::kStageCounts) {
        addParameter(std::string(description.name), description, Role::StageCount, ElementKind::Output, -1,
                     -1);
    }
}

void EngineLayout::addElements(ElementKind kind) {
    const ElementDescription& description = EngineTable::element(kind);
    const bool isSlot = kind == ElementKind::Slot;
    ElementGroup group;
    group.kind = kind;
    group.capacity = isSlot ? config_.slotCount : config_.capacity[indexOf(kind)];
    group.built = isSlot ? config_.slotCount : config_.built[indexOf(kind)];
    group.numActivePosition = static_cast<int>(parameterTable_.size());
    group.firstPosition = group.numActivePosition + 1;
    group.firstSource = static_cast<int>(sourceTable_.size());
    group.firstTarget = static_cast<int>(targetTable_.size());
    groups_.push_back(group);
    addNumActive(description.listName, kind, group.capacity, 0);
    addParameters(group);
    addConnections(group);
}

void EngineLayout::addParameters(const ElementGroup& group) {
    const ElementDescription& description = EngineTable::element(group.kind);
    const std::size_t firstLabels = labelTables_.size();
    for (const ParameterDescription& parameter : description.parameters) {
        labelTables_.push_back(splitLabels(parameter.labels));
    }
    for (int element = 0; element < group.capacity; ++element) {
        for (std::size_t i = 0; i < description.parameters.size(); ++i) {
            const ParameterDescription& parameter = description.parameters[i];
            const int input = indexByName(description.inputs, parameter.input);
            const std::string_view gap = parameter.name.empty() ? "" : " ";
            addParameter(fmt::format("{} {}{}{}", description.name, element + 1, gap, parameter.name),
                         parameter, Role::Element, group.kind, element,
                         input < 0 ? -1 : targetIndex(group.kind, element, input));
            parameterTable_.back().labels = labelTables_[firstLabels + i];
        }
    }
}

void EngineLayout::addConnections(const ElementGroup& group) {
    const ElementDescription& description = EngineTable::element(group.kind);
    for (int element = 0; element < group.capacity; ++element) {
        std::vector<int> inputs;
        for (int input = 0; input < static_cast<int>(description.inputs.size()); ++input) {
            const InputDescription& entry = description.inputs[static_cast<std::size_t>(input)];
            inputs.push_back(static_cast<int>(targetTable_.size()));
            targetTable_.push_back({fmt::format("{} {} {}", description.shortName, element + 1, entry.name),
                                    group.kind, element, input, entry.range});
        }
        for (int output = 0; output < description.outputCount; ++output) {
            std::string name = fmt::format("{} {}", description.sourceName, element + 1);
            if (description.outputCount > 1) name += fmt::format(" Output {}", output + 1);
            sourceTable_.push_back({std::move(name), group.kind, element, output, inputs});
        }
    }
}

void EngineLayout::addNumActive(std::string_view listName, ElementKind kind, int maximum, int defaultValue) {
    addParameter(fmt::format("Num Active {}", listName), countDescription(maximum, defaultValue),
                 Role::NumActive, kind, -1, -1);
}

void EngineLayout::addParameter(std::string name, const ParameterDescription& description, Role role,
                                ElementKind kind, int element, int target) {
    parameterTable_.push_back({std::move(name), description, role, kind, element, target, {}});
}

/// Source and Target of a slot choose by name among everything that the layout holds.
void EngineLayout::completeSlotLabels() {
    std::vector<std::string> sourceLabels{"< Source >"};
    for (const EngineSource& source : sourceTable_) sourceLabels.push_back(source.name);
    std::vector<std::string> targetLabels{"< Target >"};
    for (const EngineTarget& target : targetTable_) targetLabels.push_back(target.name);
    labelTables_.push_back(std::move(sourceLabels));
    labelTables_.push_back(std::move(targetLabels));
    const std::span<const std::string> sources = labelTables_[labelTables_.size() - 2];
    const std::span<const std::string> targets = labelTables_.back();
    for (int slot = 0; slot < config_.slotCount; ++slot) {
        const auto complete = [&](SlotField field, std::span<const std::string> labels) {
            EngineParameter& parameter = parameterTable_[static_cast<std::size_t>(slotPosition(slot, field))];
            parameter.labels = labels;
            parameter.description.maximum = static_cast<float>(labels.size() - 1);
        };
        complete(SlotField::Source, sources);
        complete(SlotField::Target, targets);
    }
}

const TargetRange& EngineLayout::rangeOf(int target) const {
    return rangeTable_[static_cast<std::size_t>(targetTable_[static_cast<std::size_t>(target)].range)];
}

const ElementGroup& EngineLayout::group(ElementKind kind) const {
    return groups_[indexOf(kind) - indexOf(kFirstElement)];
}

int EngineLayout::position(ElementKind kind, int element, int parameter) const {
    const int setSize = static_cast<int>(EngineTable::element(kind).parameters.size());
    return group(kind).firstPosition + element * setSize + parameter;
}

int EngineLayout::slotPosition(int slot, SlotField field) const {
    return position(ElementKind::Slot, slot, static_cast<int>(field));
}

int EngineLayout::sourceIndex(ElementKind kind, int element, int output) const {
    return group(kind).firstSource + element * EngineTable::element(kind).outputCount + output;
}

int EngineLayout::targetIndex(ElementKind kind, int element, int input) const {
    return group(kind).firstTarget + element * static_cast<int>(EngineTable::element(kind).inputs.size()) +
           input;
}

std::optional<int> EngineLayout::findParameter(std::string_view name) const {
    return findByName(parameterTable_, name);
}
std::optional<int> EngineLayout::findSource(std::string_view name) const {
    return findByName(sourceTable_, name);
}
std::optional<int> EngineLayout::findTarget(std::string_view name) const {
    return findByName(targetTable_, name);
}

std::vector<float> EngineLayout::defaultValues() const {
    std::vector<float> values;
    for (const EngineParameter& parameter : parameterTable_) {
        values.push_back(parameter.description.defaultValue);
    }
    return values;
}

}  // namespace vanta
