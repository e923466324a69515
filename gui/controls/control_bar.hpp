#pragma once

#include "gui/controls/alignment.hpp"
#include "gui/tree/control.hpp"

namespace vanta::gui {

/// Keeps its visible children in a row or a column, in their order, with the same space between them.
class ControlBar : public Control {
public:
    enum class Layout { Column, Row };

    explicit ControlBar(UserInterface& interface);

    /// Of the children across the bar.
    Property<Alignment> alignment{this, Alignment::Center};
    /// Given to each child that comes.
    Property<int> anchorChildren{this, anchor::kTopLeft};
    /// From the right or the bottom.
    Property<bool> reverse{this, false};
    Property<Layout> layout{this, Layout::Row};
    /// Between children, and from the edge to the first, in logical units.
    Property<float> spacing{this, 0.0f};
    Property<float> margin{this, 0.0f};

    int alphaAt(Point) override { return 0; }
    void childChanged(Control* child, Change change) override;
    void resized() override;
    void propertyChanged(AbstractProperty& property) override;

private:
    void layOut();
    bool layingOut_ = false;
};

}  // namespace vanta::gui
