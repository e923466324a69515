#pragma once

#include <vector>

#include "gui/graphics/geometry.hpp"

namespace vanta::gui {

/// A rectangle inside the union of both: the greater of the wide and the tall one that touching rectangles
/// have in common. Nothing if they do not touch, which loses coverage but is never wrong.
Rect mergeRects(const Rect& a, const Rect& b);

/// The merged rectangle of all, from the top down.
Rect mergeAll(std::vector<Rect> rects);

/// `rect` without `cut`, where what is left is one rectangle; else `rect` as it is.
Rect subtractRect(const Rect& rect, const Rect& cut);

/// The common part, all zero where there is none.
Rect commonPart(const Rect& a, const Rect& b);

}  // namespace vanta::gui
