#pragma once

#include "gui/controls/control_bar.hpp"
#include "interface/controls/control_factory.hpp"

namespace vanta::interface {

/// Controls of a bar in a row, with gaps, of which one takes what is free.
class BarRow {
public:
    BarRow(ControlFactory& usedFactory, gui::Control& parent);

    gui::ControlBar& bar() const { return *bar_; }
    /// An empty part of the row.
    gui::Control& addGap(float width);
    /// The control that grows, and how far.
    void setFlexible(gui::Control& control, float least, float most);
    /// Of all that is visible, with the flexible control as narrow as it gets.
    float leastWidth() const;
    /// `spare` stays empty at the right end.
    void place(float left, float top, float width, float spare = 0.0f);

private:
    ControlFactory& factory_;
    gui::ControlBar* bar_;
    gui::Control* flexible_ = nullptr;
    float least_ = 0.0f;
    float most_ = 0.0f;
};

}  // namespace vanta::interface
