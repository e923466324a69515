#pragma once

#include "gui/graphics/geometry.hpp"

namespace vanta::gui {

/// Which edges of the parent a control keeps its distance to; bits that add up.
namespace anchor {
inline constexpr int kLeft = 1;
inline constexpr int kTop = 2;
inline constexpr int kRight = 4;
inline constexpr int kBottom = 8;
inline constexpr int kTopLeft = kLeft | kTop;
inline constexpr int kAll = kLeft | kTop | kRight | kBottom;
}  // namespace anchor

/// Where a child goes when its parent grows by `growth`. On an axis without an anchor it stays in the middle.
inline Rect anchoredBounds(Rect bounds, int anchors, Point growth) {
    const auto place = [](float& nearEdge, float& farEdge, bool nearAnchor, bool farAnchor, float grown) {
        if (nearAnchor && !farAnchor) return;
        const float shift = nearAnchor || farAnchor ? grown : grown / 2.0f;
        if (!nearAnchor) nearEdge += shift;
        farEdge += shift;
    };
    place(bounds.left, bounds.right, anchors & anchor::kLeft, anchors & anchor::kRight, growth.x);
    place(bounds.top, bounds.bottom, anchors & anchor::kTop, anchors & anchor::kBottom, growth.y);
    return bounds;
}

}  // namespace vanta::gui
