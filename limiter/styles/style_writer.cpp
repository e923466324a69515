#include <fmt/format.h>

#include <iterator>

#include "limiter/styles/style_check.hpp"
#include "limiter/styles/style_source.hpp"

namespace vanta {
namespace {

class StyleWriter {
public:
    StyleWriter(const EngineLayout& engineLayout, std::span<const float> styleValues)
        : layout(engineLayout), values(styleValues) {}

    std::string write() {
        writeValues();
        writeSlots();
        writeInactive();
        return std::move(text);
    }

private:
    float valueAt(int position) const { return values[static_cast<std::size_t>(position)]; }
    const EngineParameter& parameterAt(int position) const {
        return layout.parameters()[static_cast<std::size_t>(position)];
    }
    bool isDefault(int position) const {
        return valueAt(position) == parameterAt(position).description.defaultValue;
    }
    bool isSlotField(int position) const {
        const EngineParameter& parameter = parameterAt(position);
        return parameter.kind == ElementKind::Slot && parameter.role == EngineParameter::Role::Element;
    }
    std::string valueText(int position) const {
        const EngineParameter& parameter = parameterAt(position);
        if (parameter.labels.empty()) return fmt::format("{}", valueAt(position));
        return parameter.labels[static_cast<std::size_t>(valueAt(position))];
    }

    void line(std::string_view content) {
        text += content;
        text += '\n';
    }
    void writeValues();
    void writeSlots();
    std::string slotText(int slot) const;
    void writeInactive();

    const EngineLayout& layout;
    std::span<const float> values;
    std::string text;
};

/// Each kind of element stands in a paragraph of its own.
void StyleWriter::writeValues() {
    for (int i = 0; i < static_cast<int>(values.size()); ++i) {
        if (isDefault(i) || isSlotField(i) || !isActive(layout, values, i)) continue;
        const EngineParameter& parameter = parameterAt(i);
        if (parameter.role == EngineParameter::Role::NumActive && !text.empty()) line("");
        line(fmt::format("{} = {}", parameter.name, valueText(i)));
    }
}

void StyleWriter::writeSlots() {
    const int count = static_cast<int>(valueAt(layout.group(ElementKind::Slot).numActivePosition));
    for (int slot = 0; slot < count; ++slot) line(slotText(slot));
}

std::string StyleWriter::slotText(int slot) const {
    const auto position = [&](SlotField field) { return layout.slotPosition(slot, field); };
    std::string result = fmt::format("{:2}. {} to {}", slot + 1, valueText(position(SlotField::Source)),
                                     valueText(position(SlotField::Target)));
    const bool inverted = valueAt(position(SlotField::Inverted)) != 0.0f;
    if (inverted || !isDefault(position(SlotField::Level))) {
        result += fmt::format(" ({}{})", inverted ? "-" : "", valueAt(position(SlotField::Level)));
    }
    if (valueAt(position(SlotField::Bypassed)) != 0.0f) result += " bypassed";
    return result;
}

void StyleWriter::writeInactive() {
    for (int i = 0; i < static_cast<int>(values.size()); ++i) {
        if (isDefault(i) || isActive(layout, values, i)) continue;
        line(fmt::format("# not active: {} = {}", parameterAt(i).name, valueText(i)));
    }
}

}  // namespace

std::string writeStyleSource(const EngineLayout& layout, std::span<const float> values) {
    return StyleWriter(layout, values).write();
}

}  // namespace vanta
