#include "limiter/styles/engine_layout.hpp"

#include <fmt/format.h>

#include <algorithm>

namespace vanta {
namespace {

using Role = EngineParameter::Role;

std::vector<std::string> splitLabels(std::string_view labels) {
    std::vector<std::string> result;
    while (!labels.empty()) {
        const std::size_t comma = labels.find(',');
        result.emplace_back(labels.substr(0, comma));
        labels = comma == std::string_view::npos ? std::string_view{} : labels.substr(comma + 1);
    }
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
    const auto found =
        std::ranges::find(entries, name, [](const auto& entry) -> std::string_view { return entry.name; });
    if (found == entries.end()) return std::nullopt;
    return static_cast<int>(found - entries.begin());
}

}  // namespace

EngineLayout::EngineLayout(const DynamicsEngineConfiguration& engineConfiguration)
    : config(engineConfiguration), rangeTable(engineRanges(engineConfiguration)) {
    addNumActive("Inputs", ElementKind::Input, 1, 1);
    addMainControls();
    for (ElementKind kind = kFirstElement; kind <= ElementKind::Slot; kind = next(kind)) addElements(kind);
    completeSlotLabels();
}

void EngineLayout::addMainControls() {
    const auto controls = mainControls();
    const int count = static_cast<int>(controls.size());
    addNumActive("Main Sources", ElementKind::MainThreshold, count, count);
    sourceTable.push_back({"Audio Input", ElementKind::Input, 0, 0, {}});
    sourceTable.push_back({"Trigger Input", ElementKind::Input, 1, 0, {}});
    for (int i = 0; i < count; ++i) {
        const MainControlDescription& control = controls[static_cast<std::size_t>(i)];
        const std::string name(control.parameter.suffix);
        const int element = control.kind == ElementKind::Custom ? i - 4 : 0;
        addParameter(name, control.parameter, Role::MainControl, control.kind, element, i);
        sourceTable.push_back({name, control.kind, element, 0, {}});
        targetTable.push_back({name, control.kind, element, 0, control.range});
    }
    targetTable.push_back({"Output", ElementKind::Output, 0, 0, RangeId::Audio});
    for (const ParameterDescription& description : stageCounts()) {
        addParameter(std::string(description.suffix), description, Role::StageCount, ElementKind::Output, -1,
                     -1);
    }
}

void EngineLayout::addElements(ElementKind kind) {
    const ElementDescription& description = elementDescription(kind);
    const bool isSlot = kind == ElementKind::Slot;
    ElementGroup group;
    group.kind = kind;
    group.capacity = isSlot ? config.slotCount : config.capacity[indexOf(kind)];
    group.built = isSlot ? config.slotCount : config.built[indexOf(kind)];
    group.numActivePosition = static_cast<int>(parameterTable.size());
    group.firstPosition = group.numActivePosition + 1;
    group.firstSource = static_cast<int>(sourceTable.size());
    group.firstTarget = static_cast<int>(targetTable.size());
    groups.push_back(group);
    addNumActive(description.listName, kind, group.capacity, 0);
    addParameters(group);
    addConnections(group);
}

void EngineLayout::addParameters(const ElementGroup& group) {
    const ElementDescription& description = elementDescription(group.kind);
    const std::size_t firstLabels = labelTables.size();
    for (const ParameterDescription& parameter : description.parameters) {
        labelTables.push_back(splitLabels(parameter.labels));
    }
    for (int element = 0; element < group.capacity; ++element) {
        for (std::size_t i = 0; i < description.parameters.size(); ++i) {
            const ParameterDescription& parameter = description.parameters[i];
            const int inputCount = static_cast<int>(description.inputs.size());
            const int target =
                parameter.input < 0 ? -1 : group.firstTarget + element * inputCount + parameter.input;
            addParameter(fmt::format("{}{}{}", description.prefix, element + 1, parameter.suffix), parameter,
                         Role::Element, group.kind, element, target);
            parameterTable.back().labels = labelTables[firstLabels + i];
        }
    }
}

void EngineLayout::addConnections(const ElementGroup& group) {
    const ElementDescription& description = elementDescription(group.kind);
    for (int element = 0; element < group.capacity; ++element) {
        std::vector<int> inputs;
        for (int input = 0; input < static_cast<int>(description.inputs.size()); ++input) {
            const InputDescription& entry = description.inputs[static_cast<std::size_t>(input)];
            inputs.push_back(static_cast<int>(targetTable.size()));
            targetTable.push_back({fmt::format("{}{} {}", description.shortName, element + 1, entry.name),
                                   group.kind, element, input, entry.range});
        }
        for (int output = 0; output < description.outputCount; ++output) {
            std::string name = fmt::format("{}{}", description.sourceName, element + 1);
            if (description.outputCount > 1) name += fmt::format(" Output {}", output + 1);
            sourceTable.push_back({std::move(name), group.kind, element, output, inputs});
        }
    }
}

void EngineLayout::addNumActive(std::string_view listName, ElementKind kind, int maximum, int defaultValue) {
    addParameter(fmt::format("Num Active {}", listName), countDescription(maximum, defaultValue),
                 Role::NumActive, kind, -1, -1);
}

void EngineLayout::addParameter(std::string name, const ParameterDescription& description, Role role,
                                ElementKind kind, int element, int target) {
    parameterTable.push_back({std::move(name), description, role, kind, element, target, {}});
}

/// Source and Target of a slot choose by name among everything that the layout holds.
void EngineLayout::completeSlotLabels() {
    std::vector<std::string> sourceLabels{"< Source >"};
    for (const EngineSource& source : sourceTable) sourceLabels.push_back(source.name);
    std::vector<std::string> targetLabels{"< Target >"};
    for (const EngineTarget& target : targetTable) targetLabels.push_back(target.name);
    labelTables.push_back(std::move(sourceLabels));
    labelTables.push_back(std::move(targetLabels));
    const std::span<const std::string> sources = labelTables[labelTables.size() - 2];
    const std::span<const std::string> targets = labelTables.back();
    for (int slot = 0; slot < config.slotCount; ++slot) {
        const auto complete = [&](SlotField field, std::span<const std::string> labels) {
            EngineParameter& parameter = parameterTable[static_cast<std::size_t>(slotPosition(slot, field))];
            parameter.labels = labels;
            parameter.description.maximum = static_cast<float>(labels.size() - 1);
        };
        complete(SlotField::Source, sources);
        complete(SlotField::Target, targets);
    }
}

const EngineRange& EngineLayout::rangeOf(int target) const {
    return rangeTable[static_cast<std::size_t>(targetTable[static_cast<std::size_t>(target)].range)];
}

const ElementGroup& EngineLayout::group(ElementKind kind) const {
    return groups[indexOf(kind) - indexOf(kFirstElement)];
}

int EngineLayout::position(ElementKind kind, int element, int parameter) const {
    const int setSize = static_cast<int>(elementDescription(kind).parameters.size());
    return group(kind).firstPosition + element * setSize + parameter;
}

int EngineLayout::slotPosition(int slot, SlotField field) const {
    return position(ElementKind::Slot, slot, static_cast<int>(field));
}

int EngineLayout::sourceIndex(ElementKind kind, int element, int output) const {
    return group(kind).firstSource + element * elementDescription(kind).outputCount + output;
}

int EngineLayout::targetIndex(ElementKind kind, int element, int input) const {
    return group(kind).firstTarget + element * static_cast<int>(elementDescription(kind).inputs.size()) +
           input;
}

std::optional<int> EngineLayout::findParameter(std::string_view name) const {
    return findByName(parameterTable, name);
}
std::optional<int> EngineLayout::findSource(std::string_view name) const {
    return findByName(sourceTable, name);
}
std::optional<int> EngineLayout::findTarget(std::string_view name) const {
    return findByName(targetTable, name);
}

std::vector<float> EngineLayout::defaultValues() const {
    std::vector<float> values;
    for (const EngineParameter& parameter : parameterTable) {
        values.push_back(parameter.description.defaultValue);
    }
    return values;
}

}  // namespace vanta
