#pragma once

#include <memory>
#include <vector>

#include "gui/controls/value_control.hpp"
#include "interface/binding/link_chains.hpp"
#include "interface/binding/parameter_gestures.hpp"
#include "interface/binding/parameter_text.hpp"

namespace vanta::interface {

/// Ties controls to parameters, one control to a parameter. A control holds an integer and knows nothing of
/// its parameter; both ways between the two lead through here. On the interface's thread.
class ParameterBindings final : public gui::Component, public gui::ValueControlListener {
public:
    /// Of every continuous control.
    static constexpr int kContinuousSteps = 36000;

    class Listener {
    public:
        virtual ~Listener() = default;
        /// The control has its range, texts and value by now.
        virtual void controlBound(gui::ValueControl& control, int index) = 0;
        /// The user asks for what can be done with a bound control, at a point of it.
        virtual void controlRightClicked(gui::ValueControl& control) = 0;
    };

    ParameterBindings(gui::UserInterface& interface, GenericPlugin& plugin, ParameterGestures& usedGestures);
    ~ParameterBindings() override;

    /// The control stands for parameter `index` from now on, in place of the one that did so before. Null
    /// unbinds, as does another control; index -1 is ignored. Binding a pair again only refreshes it, as is
    /// needed after the control's curves have changed.
    void bind(int index, gui::ValueControl* control);
    /// The control bound to a parameter, or null.
    gui::ValueControl* control(int index) const { return bound_[static_cast<std::size_t>(index)]; }
    /// The parameter of a control, or -1.
    int indexOf(const gui::ValueControl& control) const;
    AbstractPluginParameter& parameter(int index) const { return *model_.parameterAt(index); }
    int count() const { return static_cast<int>(bound_.size()); }

    /// Takes the value of a parameter, or of all, to its control. A control that is being moved keeps its
    /// own.
    void show(int index);
    LinkChains& links() { return links_; }
    ParameterGestures& gestures() { return gestures_; }
    Listener* listener = nullptr;

    int requestChange(gui::ValueControl& control, int delta) override;
    void valueChanging(gui::ValueControl& control, gui::GesturePhase phase) override;
    void linkRemoved(Component* other) override;

private:
    void release(int index);
    void setRange(int index, gui::ValueControl& control) const;
    void showOne(int index);
    void beginChain(int index);
    void moveChain(int index, gui::ValueControl& control);
    void endChain(int index);
    void rightClicked(void* sender);

    GenericPlugin& model_;
    ParameterGestures& gestures_;
    LinkChains links_;
    std::vector<gui::ValueControl*> bound_;
    std::vector<bool> moving_;  ///< by the control
    std::vector<std::unique_ptr<ParameterText>> texts_;
};

}  // namespace vanta::interface
