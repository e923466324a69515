#include "gui/graphics/canvas.hpp"
#include "gui/tree/control.hpp"
#include "gui/tree/region.hpp"

namespace vanta::gui {

void Control::markDirty(const Rect& rect) {
    if (!visible || alpha <= 0) return;
    const Rect part = commonPart(rect, localBounds_);
    if (part.isEmpty()) return;
    previousBounds_ = previousBounds_.united(part);
    requestUpdate();
}

void Control::update() {
    UpdatedObject::update();
    if (previousBounds_.isEmpty()) return;
    const Rect dirty = previousBounds_;
    previousBounds_ = {};
    invalidate(dirty);
}

/// A part that a handler of this very update has marked.
bool Control::hasPending() const {
    return !previousBounds_.isEmpty() || UpdatedObject::hasPending();
}

void Control::invalidate(const Rect& rect) {
    if (previousParent_) previousParent_->markDirty(rect.translated(placedBounds_.origin()));
}

void Control::recomputeOpaque() {
    std::vector<Rect> covered;
    for (const Control* child : children_) {
        if (child->opaqueRect_.isEmpty()) continue;
        covered.push_back(child->opaqueRect_.translated(child->placedBounds_.origin()));
    }
    childrenOpaque_ = commonPart(mergeAll(std::move(covered)), localBounds_);
    Rect now{};
    if (visible && alpha == 255) now = opaque ? localBounds_ : childrenOpaque_;
    if (isSame(now, opaqueRect_)) return;
    opaqueRect_ = now;
    report(Change::OpaqueRegion);
}

void Control::drawTree(Canvas& canvas) {
    const Rect visiblePart = commonPart(canvas.clip, localBounds_);
    if (visiblePart.isEmpty()) return;
    canvas.alpha = alpha * canvas.alpha / 255;
    const Rect uncovered = canvas.alpha == 255 ? subtractRect(visiblePart, childrenOpaque_) : visiblePart;
    if (!uncovered.isEmpty()) {
        canvas.clip = uncovered;
        paint(canvas);
    }
    canvas.clip = visiblePart;
    for (std::size_t i = 0; i < children_.size(); ++i) {
        Control& child = *children_[i];
        if (!child.visible || child.alpha <= 0) continue;
        const Canvas::State saved = canvas.state();
        const Point offset = child.placedBounds_.origin();
        canvas.origin = saved.origin + offset;
        canvas.clip = saved.clip.translated(Point{} - offset);
        child.drawTree(canvas);
        canvas.setState(saved);
    }
}

}  // namespace vanta::gui
