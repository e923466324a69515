#pragma once

#include "gui/controls/rollover_manager.hpp"
#include "gui/controls/value_control.hpp"

namespace vanta::gui {

/// A value control that lights up under the pointer, or when it is told to.
class RolloverValueControl : public ValueControl {
public:
    using ValueControl::ValueControl;

    Property<bool> highlighted{this, false};
    /// The opacity of the control's picture at rest.
    Property<int> restAlpha{this, 255};

    RolloverManager& rollover() { return rollover_; }

    void mouseEnter() override;
    void mouseLeave() override;
    void propertyChanged(AbstractProperty& property) override;

private:
    void updateRollover() { rollover_.setActive(highlighted || hoveredOver_); }

    bool hoveredOver_ = false;
    RolloverManager rollover_{*this};
};

}  // namespace vanta::gui
