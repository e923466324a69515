#include "interface/binding/parameter_text.hpp"

#include <cmath>

#include "plugin/parameters/abstract_plugin_parameter.hpp"

namespace vanta::interface {
namespace {

bool isIndexed(const AbstractPluginParameter& parameter) {
    return parameter.kind() == AbstractPluginParameter::Kind::Indexed;
}

}  // namespace

float valueAt(const AbstractPluginParameter& parameter, const gui::ValueControl& control, int position) {
    if (isIndexed(parameter)) return static_cast<float>(position);
    return parameter.denormalize(control.normalizedAt(position));
}

int positionOf(const AbstractPluginParameter& parameter, const gui::ValueControl& control, float value) {
    if (isIndexed(parameter)) return static_cast<int>(std::lround(value));
    return control.valueAt(parameter.normalize(value));
}

/// The parameter's own value, where the control stands for it: between two steps of the control lie more
/// values than it can tell apart.
std::string ParameterText::textOf(const gui::ValueControl& control) const {
    const float exact = parameter_.value();
    const bool isExact = positionOf(parameter_, control, exact) == control.value;
    return parameter_.text(isExact ? exact : valueAt(parameter_, control, control.value));
}

std::optional<int> ParameterText::valueOf(const gui::ValueControl& control, std::string_view text) const {
    float typed = 0.0f;
    if (!parameter_.parseText(std::string(text), &typed)) return std::nullopt;
    return positionOf(parameter_, control, typed);
}

}  // namespace vanta::interface
