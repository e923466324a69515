#pragma once

#include "gui/tree/control.hpp"

namespace vanta::gui {

/// A container that scales its children with its own size. Their anchors have no effect.
class FlexibleControl : public Control {
public:
    using Control::Control;
    void resized() override;

protected:
    void layoutChildren(Point /*growth*/) override {}

private:
    Point laidOutSize_;  ///< for which the children stand where they stand
};

}  // namespace vanta::gui
