#include "gui/tree/flexible_control.hpp"

namespace vanta::gui {

void FlexibleControl::resized() {
    const Point size{localBounds().width(), localBounds().height()};
    // Through a size of nothing the proportions would be lost.
    if (size.x > 0.0f && size.y > 0.0f) {
        if (laidOutSize_.x > 0.0f && laidOutSize_.y > 0.0f) {
            const Point factor{size.x / laidOutSize_.x, size.y / laidOutSize_.y};
            for (Control* child : children()) {
                const Rect& now = child->bounds.value();
                child->setBounds(
                    {now.left * factor.x, now.top * factor.y, now.right * factor.x, now.bottom * factor.y});
            }
        }
        laidOutSize_ = size;
    }
    Control::resized();
}

}  // namespace vanta::gui
