#include "cli/parameter_text.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <vector>

#include "cli/suggestion.hpp"
#include "foundation/ascii.hpp"
#include "plugin/parameters/indexed_parameter.hpp"
#include "plugin/parameters/number_text.hpp"

namespace vanta {

namespace {

std::vector<std::string> labelsOf(const AbstractPluginParameter& parameter) {
    const auto* indexed = dynamic_cast<const IndexedParameter*>(&parameter);
    return indexed ? indexed->labels() : std::vector<std::string>();
}

/// A choice is named by its label or by its position, whole: its parser would take "3x" for position 3.
bool isHalfRead(const AbstractPluginParameter& parameter, const std::string& text, float value) {
    if (labelsOf(parameter).empty() || equalsIgnoringCase(parameter.text(value), text)) return false;
    return !std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

/// "30 dB" of "+30.00 dB".
std::string plainNumber(std::string text) {
    if (text.starts_with('+')) text.erase(0, 1);
    const auto end = std::min(text.find_first_not_of("+-.0123456789"), text.size());
    if (text.find('.') >= end) return text;
    auto last = end;
    while (text[last - 1] == '0') --last;
    if (text[last - 1] == '.') --last;
    return text.erase(last, end - last);
}

}  // namespace

std::string rangeText(const AbstractPluginParameter& parameter) {
    const auto labels = labelsOf(parameter);
    if (!labels.empty()) return fmt::format("{}", fmt::join(labels, ", "));
    std::string low = plainNumber(parameter.text(parameter.minimum()));
    const std::string high = plainNumber(parameter.text(parameter.maximum()));
    if (const auto unit = low.find(' '); unit != std::string::npos && high.ends_with(low.substr(unit)))
        low.erase(unit);
    return fmt::format("{} to {}", low, high);
}

std::string valuesInSentence(const AbstractPluginParameter& parameter) {
    std::string text = rangeText(parameter);
    if (labelsOf(parameter).empty()) return text;
    if (const auto last = text.rfind(", "); last != std::string::npos) text.replace(last, 2, " or ");
    return inSentence(text);
}

std::string inSentence(std::string name) {
    for (std::size_t i = 0; i + 1 < name.size(); ++i) {
        const bool starts = i == 0 || name[i - 1] == ' ';
        if (starts && lowerCase(name[i + 1]) == name[i + 1]) name[i] = lowerCase(name[i]);
    }
    return name;
}

void setByText(AbstractPluginParameter& parameter, const std::string& text, const std::string& typed) {
    float value = 0.0f;
    const bool isRead = parameter.parseText(text, &value) && !isHalfRead(parameter, text, value);
    if (!isRead || parameter.exceedsRange(text)) {
        const auto labels = labelsOf(parameter);
        if (labels.size() > 2) throw unknownName(inSentence(parameter.name()), typed, labels);
        const std::string known =
            labels.empty() ? rangeText(parameter) : fmt::format("{}", fmt::join(labels, " or "));
        throw UsageError(fmt::format("{} cannot be '{}': use {}", parameter.name(), typed, known));
    }
    // What turns a level down can be typed without its sign; on a command line that is more likely a mistake.
    const auto number = readNumber(text);
    if (number && number->value > 0.0 && value < 0.0f)
        throw UsageError(fmt::format("{} cannot be '{}': use {}, such as -{}", parameter.name(), typed,
                                     rangeText(parameter), typed));
    parameter.setValue(value, 0);
}

std::string assignedName(std::string_view assignment) {
    return std::string(trimmed(assignment.substr(0, assignment.find('='))));
}

void setByAssignment(LimiterSettings& settings, const std::string& assignment) {
    const auto equals = assignment.find('=');
    if (equals == std::string::npos)
        throw UsageError(fmt::format("--set: '{}' is not an assignment: use \"Name=text\"", assignment));
    const std::string name = assignedName(assignment);
    AbstractPluginParameter* parameter = settings.find(name);
    if (!parameter) {
        std::vector<std::string> names;
        for (int i = 0; i < settings.parameterCount(); ++i) names.push_back(settings.parameterAt(i)->name());
        throw UsageError(
            fmt::format("unknown parameter '{}'{}; see 'vanta params'", name, suggestion(name, names)));
    }
    const std::string text(trimmed(std::string_view(assignment).substr(equals + 1)));
    setByText(*parameter, text, text);
}

}  // namespace vanta
