#pragma once

#include "gui/controls/value_control.hpp"

namespace vanta {
class AbstractPluginParameter;
}

namespace vanta::interface {

/// Where a bound control stands, in its parameter's own numbers.
float valueAt(const AbstractPluginParameter& parameter, const gui::ValueControl& control, int position);
/// Where a bound control has to stand for a value.
int positionOf(const AbstractPluginParameter& parameter, const gui::ValueControl& control, float value);

/// How a bound control's value is written and typed: as its parameter's.
class ParameterText final : public gui::ValueText {
public:
    explicit ParameterText(const AbstractPluginParameter& shown) : parameter_(shown) {}

    std::string textOf(const gui::ValueControl& control) const override;
    std::optional<int> valueOf(const gui::ValueControl& control, std::string_view text) const override;

private:
    const AbstractPluginParameter& parameter_;
};

}  // namespace vanta::interface
