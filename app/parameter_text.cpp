#include "app/parameter_text.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <vector>

#include "app/failure.hpp"
#include "app/suggestion.hpp"
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

std::string trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return std::string(text.substr(first, text.find_last_not_of(" \t") - first + 1));
}

}  // namespace

std::string rangeText(const AbstractPluginParameter& parameter) {
    const auto labels = labelsOf(parameter);
    if (!labels.empty()) return fmt::format("{}", fmt::join(labels, ", "));
    return fmt::format("{} to {}", parameter.text(parameter.minimum()), parameter.text(parameter.maximum()));
}

void setByText(AbstractPluginParameter& parameter, const std::string& text, std::string_view asked) {
    float value = 0.0f;
    if (!parameter.parseText(text, &value) || isHalfRead(parameter, text, value)) {
        const auto labels = labelsOf(parameter);
        throw UsageError(fmt::format("{}: '{}' is no value of {}{}: it takes {}", asked, text,
                                     parameter.name(), suggestion(text, labels), rangeText(parameter)));
    }
    if (parameter.exceedsRange(text)) {
        throw UsageError(fmt::format("{}: '{}' is out of range: {} goes from {}", asked, text,
                                     parameter.name(), rangeText(parameter)));
    }
    parameter.setValue(value, 0);
}

AbstractPluginParameter& setByAssignment(LimiterSettings& settings, const std::string& assignment) {
    const auto equals = assignment.find('=');
    if (equals == std::string::npos) {
        throw UsageError(fmt::format("--set: '{}' is not of the form \"Name=text\"", assignment));
    }
    const std::string name = trimmed(std::string_view(assignment).substr(0, equals));
    AbstractPluginParameter* parameter = settings.find(name);
    if (!parameter) {
        std::vector<std::string> names;
        for (int i = 0; i < settings.parameterCount(); ++i) names.push_back(settings.parameterAt(i)->name());
        throw UsageError(fmt::format("--set: there is no parameter '{}'{}; 'vanta params' lists them", name,
                                     suggestion(name, names)));
    }
    setByText(*parameter, trimmed(std::string_view(assignment).substr(equals + 1)), "--set");
    return *parameter;
}

}  // namespace vanta
