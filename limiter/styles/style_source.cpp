#include "limiter/styles/style_source.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "foundation/ascii.hpp"
#include "foundation/near_miss.hpp"
#include "limiter/styles/style_check.hpp"

namespace vanta {
namespace {

using Names = std::vector<std::string_view>;

/// A decimal number that takes up the whole text, in any locale; -0 reads as 0.
std::optional<float> readNumber(std::string_view text) {
    float value = 0.0f;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return value + 0.0f;
}

template <typename Entries>
Names namesOf(const Entries& entries) {
    Names names;
    for (const auto& entry : entries) names.push_back(entry.name);
    return names;
}

class StyleParser {
public:
    StyleParser(const EngineLayout& layout, std::string_view file)
        : layout_(layout), file_(file), values_(layout.defaultValues()), lines_(values_.size(), 0) {}

    std::vector<float> parse(std::string_view text);

private:
    void parseLine(std::string_view text);
    void parseValue(std::string_view name, std::string_view text);
    std::optional<float> readValue(const EngineParameter& parameter, std::string_view text);
    void parseSlot(std::string_view text);
    std::string_view takeSlotNumber(std::string_view text);
    std::string_view takeLevel(std::string_view text);
    void setSlotEnd(SlotField field, std::string_view name);
    void setSlot(SlotField field, float value);
    void checkSlotCount();
    void checkInactive();
    void fault(int atLine, std::string_view message);

    const EngineLayout& layout_;
    std::string_view file_;
    std::vector<float> values_;
    std::vector<int> lines_;  ///< by position, the line that gave the value; 0 for none
    std::string faults_;
    int line_ = 0;
    int slotCount_ = 0;
};

std::vector<float> StyleParser::parse(std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        ++line_;
        parseLine(trimmed(text.substr(0, end).substr(0, text.find('#'))));
        text = end == std::string_view::npos ? std::string_view{} : text.substr(end + 1);
    }
    checkSlotCount();
    checkInactive();
    // A line that could not be read leaves gaps behind, about which there is nothing more to say.
    if (faults_.empty()) {
        for (const StyleFault& found : checkStyle(layout_, values_)) {
            fault(std::max(lines_[static_cast<std::size_t>(found.position)], 1), found.message);
        }
    }
    if (!faults_.empty()) throw StyleError(faults_);
    return std::move(values_);
}

void StyleParser::parseLine(std::string_view text) {
    if (text.empty()) return;
    const std::size_t equals = text.find('=');
    if (equals != std::string_view::npos) {
        parseValue(trimmed(text.substr(0, equals)), trimmed(text.substr(equals + 1)));
    } else if (text.find(" to ") != std::string_view::npos) {
        parseSlot(text);
    } else {
        fault(line_, fmt::format("cannot read \"{}\": write \"Name = value\" or \"Source to Target (Level)\"",
                                 text));
    }
}

void StyleParser::parseValue(std::string_view name, std::string_view text) {
    const std::optional<int> position = layout_.findParameter(name);
    if (!position) {
        fault(line_, fmt::format("unknown parameter \"{}\"{}", name,
                                 nearMissHint(name, namesOf(layout_.parameters()))));
        return;
    }
    const auto index = static_cast<std::size_t>(*position);
    const EngineParameter& parameter = layout_.parameters()[index];
    if (parameter.role == EngineParameter::Role::Element && parameter.kind == ElementKind::Slot) {
        fault(line_,
              fmt::format("{} is set in the line of its slot: write \"Source to Target (Level)\"", name));
    } else if (lines_[index] != 0) {
        fault(line_, fmt::format("{} is set twice: remove this line or line {}", name, lines_[index]));
    } else if (const std::optional<float> value = readValue(parameter, text)) {
        values_[index] = *value;
        lines_[index] = line_;
    }
}

std::optional<float> StyleParser::readValue(const EngineParameter& parameter, std::string_view text) {
    if (!parameter.labels.empty()) {
        const auto found = std::ranges::find(parameter.labels, text);
        if (found != parameter.labels.end()) return static_cast<float>(found - parameter.labels.begin());
        fault(line_, fmt::format("{} cannot be \"{}\": use one of \"{}\"", parameter.name, text,
                                 fmt::join(parameter.labels, "\", \"")));
        return std::nullopt;
    }
    const ParameterDescription& limits = parameter.description;
    const std::optional<float> value = readNumber(text);
    if (!value) {
        fault(line_, fmt::format("{} cannot be \"{}\": use a number from {} to {}", parameter.name, text,
                                 limits.minimum, limits.maximum));
    }
    return value;
}

void StyleParser::parseSlot(std::string_view text) {
    if (slotCount_ == layout_.configuration().slotCount) {
        fault(line_, fmt::format("a style has at most {} slots: remove this one", slotCount_));
        return;
    }
    text = takeLevel(takeSlotNumber(text));
    const std::size_t to = text.find(" to ");
    if (to == std::string_view::npos) {
        fault(line_, fmt::format("cannot read the slot \"{}\": write \"Source to Target\"", text));
    } else {
        setSlotEnd(SlotField::Source, trimmed(text.substr(0, to)));
        setSlotEnd(SlotField::Target, trimmed(text.substr(to + 4)));
    }
    ++slotCount_;
}

/// Slots speak of each other by number; a list that is out of step shows here.
std::string_view StyleParser::takeSlotNumber(std::string_view text) {
    const std::size_t digits = text.find_first_not_of("0123456789");
    if (digits == 0 || digits == std::string_view::npos || text[digits] != '.') return text;
    if (text.substr(0, digits) != std::to_string(slotCount_ + 1)) {
        fault(line_, fmt::format("slot {0} is numbered {1}: number it {0}, or leave the number out",
                                 slotCount_ + 1, text.substr(0, digits)));
    }
    return trimmed(text.substr(digits + 1));
}

/// Takes "(Level)" and "bypassed" off the end.
std::string_view StyleParser::takeLevel(std::string_view text) {
    constexpr std::string_view bypassed = " bypassed";
    setSlot(SlotField::Bypassed, text.ends_with(bypassed) ? 1.0f : 0.0f);
    if (text.ends_with(bypassed)) text = trimmed(text.substr(0, text.size() - bypassed.size()));
    const std::size_t bracket = text.find('(');
    if (bracket == std::string_view::npos) return text;
    std::string_view level = text.substr(bracket + 1);
    const bool closed = level.ends_with(')');
    if (closed) level.remove_suffix(1);
    const bool inverted = level.starts_with('-');
    if (inverted) level.remove_prefix(1);
    const std::optional<float> value = readNumber(level);
    if (!closed || !value || !(*value >= 0.0f && *value <= 1.0f)) {
        fault(line_,
              fmt::format(
                  "slot {} cannot have the level \"{}\": use (0) to (1), with a minus to invert the slot",
                  slotCount_ + 1, text.substr(bracket)));
    }
    setSlot(SlotField::Level, value.value_or(0.0f));
    setSlot(SlotField::Inverted, inverted ? 1.0f : 0.0f);
    return trimmed(text.substr(0, bracket));
}

void StyleParser::setSlotEnd(SlotField field, std::string_view name) {
    const int position = layout_.slotPosition(slotCount_, field);
    const auto& labels = layout_.parameters()[static_cast<std::size_t>(position)].labels;
    const auto found = std::ranges::find(labels, name);
    if (found == labels.end()) {
        const Names names(labels.begin(), labels.end());
        fault(line_, fmt::format("unknown {} \"{}\"{}", field == SlotField::Source ? "source" : "target",
                                 name, nearMissHint(name, names)));
        return;
    }
    setSlot(field, static_cast<float>(found - labels.begin()));
}

void StyleParser::setSlot(SlotField field, float value) {
    const auto index = static_cast<std::size_t>(layout_.slotPosition(slotCount_, field));
    values_[index] = value;
    lines_[index] = line_;
}

void StyleParser::checkSlotCount() {
    const auto index = static_cast<std::size_t>(layout_.group(ElementKind::Slot).numActivePosition);
    if (values_[index] == static_cast<float>(slotCount_)) return;
    fault(std::max(lines_[index], 1),
          fmt::format("Num Active Slots is {}, but the style lists {}: set it to {}", values_[index],
                      slotCount_, slotCount_));
}

void StyleParser::checkInactive() {
    for (std::size_t i = 0; i < values_.size(); ++i) {
        const EngineParameter& parameter = layout_.parameters()[i];
        const bool isSlot = parameter.kind == ElementKind::Slot;
        if (lines_[i] == 0 || isSlot || isActive(layout_, values_, static_cast<int>(i))) continue;
        fault(lines_[i], fmt::format("{} has no effect {}", parameter.name,
                                     whileInactiveText(layout_, values_, parameter.kind, parameter.element)));
    }
}

void StyleParser::fault(int atLine, std::string_view message) {
    if (!faults_.empty()) faults_ += '\n';
    faults_ += fmt::format("{}:{}: {}", file_, atLine, message);
}

}  // namespace

std::vector<float> parseStyleSource(const EngineLayout& layout, std::string_view text,
                                    std::string_view fileName) {
    return StyleParser(layout, fileName).parse(text);
}

}  // namespace vanta
