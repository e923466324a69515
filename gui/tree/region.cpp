#include "gui/tree/region.hpp"

#include <algorithm>

namespace vanta::gui {
namespace {

float area(const Rect& rect) {
    return rect.isEmpty() ? 0.0f : rect.width() * rect.height();
}

}  // namespace

Rect mergeRects(const Rect& a, const Rect& b) {
    if (b.isEmpty()) return a;
    if (a.isEmpty()) return b;
    if (a.right < b.left || b.right < a.left || a.bottom < b.top || b.bottom <= a.top) return {};
    const Rect wide{std::min(a.left, b.left), std::max(a.top, b.top), std::max(a.right, b.right),
                    std::min(a.bottom, b.bottom)};
    const Rect tall{std::max(a.left, b.left), std::min(a.top, b.top), std::min(a.right, b.right),
                    std::max(a.bottom, b.bottom)};
    return area(tall) > area(wide) ? tall : wide;
}

Rect mergeAll(std::vector<Rect> rects) {
    std::sort(rects.begin(), rects.end(),
              [](const Rect& a, const Rect& b) { return a.top != b.top ? a.top < b.top : a.left < b.left; });
    Rect merged{};
    for (const Rect& rect : rects) merged = mergeRects(merged, rect);
    return merged;
}

Rect subtractRect(const Rect& rect, const Rect& cut) {
    const Rect overlap = commonPart(rect, cut);
    if (overlap.isEmpty()) return rect;
    Rect rest = rect;
    if (overlap.top <= rect.top && overlap.bottom >= rect.bottom) {
        if (overlap.left <= rect.left) {
            rest.left = overlap.right;
        } else if (overlap.right >= rect.right) {
            rest.right = overlap.left;
        }
    } else if (overlap.left <= rect.left && overlap.right >= rect.right) {
        if (overlap.top <= rect.top) {
            rest.top = overlap.bottom;
        } else if (overlap.bottom >= rect.bottom) {
            rest.bottom = overlap.top;
        }
    }
    return rest;
}

Rect commonPart(const Rect& a, const Rect& b) {
    const Rect common = a.intersected(b);
    return common.isEmpty() ? Rect{} : common;
}

}  // namespace vanta::gui
