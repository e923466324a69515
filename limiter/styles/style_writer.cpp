#include <fmt/format.h>

#include <iterator>

#include "limiter/styles/style_check.hpp"
#include "limiter/styles/style_source.hpp"

namespace vanta {
namespace {

class StyleWriter {
public:
    StyleWriter(const EngineLayout& layout, StyleValues values) : layout_(layout), values_(values) {}

    std::string write() {
        writeValues();
        writeSlots();
        writeInactive();
        return std::move(text_);
    }

private:
    const EngineParameter& parameterAt(int position) const {
        return layout_.parameters()[static_cast<std::size_t>(position)];
    }
    bool isDefault(int position) const {
        return values_.at(position) == parameterAt(position).description.defaultValue;
    }
    bool isSlotField(int position) const {
        const EngineParameter& parameter = parameterAt(position);
        return parameter.kind == ElementKind::Slot && parameter.role == EngineParameter::Role::Element;
    }
    std::string valueText(int position) const {
        const EngineParameter& parameter = parameterAt(position);
        if (parameter.labels.empty()) return fmt::format("{}", values_.at(position));
        return parameter.labels[static_cast<std::size_t>(values_.integerAt(position))];
    }

    void line(std::string_view content) {
        text_ += content;
        text_ += '\n';
    }
    void writeValues();
    void writeSlots();
    std::string slotText(int slot) const;
    void writeInactive();

    const EngineLayout& layout_;
    StyleValues values_;
    std::string text_;
};

/// Each kind of element stands in a paragraph of its own.
void StyleWriter::writeValues() {
    for (int i = 0; i < values_.size(); ++i) {
        if (isDefault(i) || isSlotField(i) || !isActive(layout_, values_, i)) continue;
        const EngineParameter& parameter = parameterAt(i);
        if (parameter.role == EngineParameter::Role::NumActive && !text_.empty()) line("");
        line(fmt::format("{} = {}", parameter.name, valueText(i)));
    }
}

void StyleWriter::writeSlots() {
    const int count = values_.integerAt(layout_.group(ElementKind::Slot).numActivePosition);
    for (int slot = 0; slot < count; ++slot) line(slotText(slot));
}

std::string StyleWriter::slotText(int slot) const {
    const auto position = [&](SlotField field) { return layout_.slotPosition(slot, field); };
    std::string result = fmt::format("{:2}. {} to {}", slot + 1, valueText(position(SlotField::Source)),
                                     valueText(position(SlotField::Target)));
    const bool inverted = values_.at(position(SlotField::Inverted)) != 0.0f;
    if (inverted || !isDefault(position(SlotField::Level))) {
        result += fmt::format(" ({}{})", inverted ? "-" : "", values_.at(position(SlotField::Level)));
    }
    if (values_.at(position(SlotField::Bypassed)) != 0.0f) result += " bypassed";
    return result;
}

void StyleWriter::writeInactive() {
    for (int i = 0; i < values_.size(); ++i) {
        if (isDefault(i) || isActive(layout_, values_, i)) continue;
        line(fmt::format("# not active: {} = {}", parameterAt(i).name, valueText(i)));
    }
}

}  // namespace

std::string writeStyleSource(const EngineLayout& layout, StyleValues values) {
    return StyleWriter(layout, values).write();
}

}  // namespace vanta
