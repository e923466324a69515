#pragma once

#include "gui/controls/value_control.hpp"

namespace vanta::interface {

/// A second control of something that a bound control stands for: it shows what that one shows, and hands it
/// what is done to it, so that the parameter knows of one control only.
class ControlProxy final : public gui::Component, public gui::ValueControlListener {
public:
    ControlProxy(gui::ValueControl& duplicate, gui::ValueControl& original);
    ~ControlProxy() override;

    int requestChange(gui::ValueControl&, int) override { return 0; }
    void valueChanging(gui::ValueControl& control, gui::GesturePhase phase) override;
    void linkRemoved(Component* other) override;

private:
    void follow(void*);

    gui::ValueControl* duplicate_;  ///< null: gone
    gui::ValueControl* original_;
};

}  // namespace vanta::interface
