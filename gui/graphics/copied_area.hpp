#pragma once

#include "gui/graphics/geometry.hpp"

namespace vanta::gui {

/// Where pixels of a picture go to, and where they come from.
struct CopiedArea {
    DeviceRect target;
    DevicePoint source;

    /// From logical coordinates, as a canvas gives them.
    static CopiedArea of(const Rect& target, Point source, float scale) {
        return {toDevice(target, scale), {toDevice(source.x, scale), toDevice(source.y, scale)}};
    }

    /// Keeps what lies within the target's bounds.
    void clipTarget(const DeviceRect& bounds) {
        const DeviceRect inside = target.intersected(bounds);
        source = source + DevicePoint{inside.left - target.left, inside.top - target.top};
        target = inside;
    }
    /// Keeps what `from` on lies within a source of these bounds.
    void clipSource(const DeviceRect& bounds, DevicePoint from) {
        clipTarget(bounds.translated({target.left - from.x, target.top - from.y}));
    }
};

}  // namespace vanta::gui
