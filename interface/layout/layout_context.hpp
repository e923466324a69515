#pragma once

#include "gui/tree/root_control.hpp"
#include "interface/frame/quillmark_plugin_interface.hpp"
#include "interface/loudness/meter_link.hpp"
#include "limiter/model/vanta_plugin.hpp"

namespace vanta::interface {

/// From the middle of a button with a caret at its right to that of its text.
inline constexpr float kBesideCaret = -6.5f;

/// What every part of the layout is built from.
struct LayoutContext {
    QuillmarkPluginInterface& frame;
    VantaPlugin& plugin;
    MeterLink& meters;

    ControlFactory& factory() const { return frame.factory(); }
    gui::RootControl& root() const { return frame.root(); }

    /// Makes the control that of the parameter.
    template <typename Kind>
    Kind& bind(const AbstractPluginParameter& parameter, Kind& control) const {
        frame.bindControl(parameter.index(), &control);
        return control;
    }
    /// An item for each value of the parameter, then as `bind`. `shorten` says what the button shows.
    gui::SelectButton& bindChoice(const AbstractPluginParameter& parameter, gui::SelectButton& button,
                                  std::string (*shorten)(const std::string&) = nullptr) const {
        for (float value = parameter.minimum(); value <= parameter.maximum(); value += 1.0f)
            button.addItem(parameter.text(value), shorten ? shorten(parameter.text(value)) : std::string());
        return bind(parameter, button);
    }
};

/// Output Level with one decimal, which is what there is room for.
std::string shortOutputLevel(const VantaPlugin& plugin);

/// Which parameters may have changed: one, or all of them.
struct ParameterChange {
    int index;

    bool isAll() const { return index < 0; }
    template <typename... Parameters>
    bool concerns(const Parameters&... parameters) const {
        return isAll() || ((index == parameters.index()) || ...);
    }
};

/// Makes a control the parent of all that is made while this lives.
class ParentScope {
public:
    ParentScope(ControlFactory& factory, gui::Control& parent)
        : factory_(factory), before_(std::exchange(factory.parent, &parent)) {}
    ~ParentScope() { factory_.parent = before_; }
    ParentScope(const ParentScope&) = delete;
    ParentScope& operator=(const ParentScope&) = delete;

private:
    ControlFactory& factory_;
    gui::Control* before_;
};

}  // namespace vanta::interface
