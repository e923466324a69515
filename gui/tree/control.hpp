#pragma once

#include <string>
#include <vector>

#include "foundation/notify_event.hpp"
#include "foundation/property.hpp"
#include "foundation/updated_object.hpp"
#include "gui/graphics/geometry.hpp"
#include "gui/tree/anchors.hpp"
#include "gui/tree/component.hpp"
#include "gui/tree/key_press.hpp"
#include "gui/tree/modifiers.hpp"

namespace vanta::gui {

class Bitmap;
class Canvas;
class RootControl;

/// A rectangle of the interface that is painted and takes the pointer. Controls are light: a tree of them
/// shares the one window of its root. Points and rectangles are logical, and a control's own unless told
/// otherwise. On the interface's thread, or another that holds the root's lock.
///
/// Deleting a control leaves its children without a parent; `removeAllChildren` deletes them.
class Control : public Component, public UpdatedObject {
public:
    enum class Change { Added, Removed, Parent, Visibility, Bounds, Alpha, OpaqueRegion };
    enum class WheelPhase { Begin, Move, End };
    enum class WheelAxis { Horizontal, Vertical };

    /// A turn of the wheel or a stroke of a touchpad. Positive is up and right.
    struct WheelMove {
        Point amount;  ///< of a control's whole range, -1 to 1; grows with the speed
        Point pixels;  ///< 25 are a click
    };

    explicit Control(UserInterface& interface);
    ~Control() override;

    /// Edges whose distance to the parent's is kept: bits of `anchor`.
    Property<int> anchor{this, anchor::kTopLeft};
    /// The left button drags the control within its parent.
    Property<bool> movable{this, false};
    /// In the parent's coordinates.
    Property<Rect> bounds{this, Rect{}};
    /// A control that is not is never under the pointer.
    Property<bool> enabled{this, true};
    /// Whether the second press of a double click calls `doubleClick` and is no click of its own.
    Property<bool> doubleClickable{this, true};
    /// Help, shown when the pointer rests.
    Property<std::string> hint{this, std::string{}};
    /// What those who cannot see the control are told that it is.
    Property<std::string> accessibleName{this, std::string{}};
    /// Covers all that lies behind it.
    Property<bool> opaque{this, false};
    /// 0 to 255, times that of its parents.
    Property<int> alpha{this, 255};
    /// The pointer meets the control where its opacity, alpha included, is above this (0 to 255).
    Property<int> hitThreshold{this, 240};
    /// Assigning it moves the control in the tree. A parent inside the control itself is refused.
    Property<Control*> parent{this, nullptr};
    Property<bool> visible{this, true};

    NotifyEvent onClick;
    NotifyEvent onDoubleClick;
    NotifyEvent onMouseDown;
    NotifyEvent onMouseEnter;
    NotifyEvent onMouseLeave;
    NotifyEvent onMouseMove;
    NotifyEvent onMouseUp;
    NotifyEvent onResize;
    NotifyEvent onRightClick;

    // The tree.
    const std::vector<Control*>& children() const { return children_; }
    /// Deletes them and all below, the last first.
    void removeAllChildren();
    /// To an index from 0 to the number of children, which is the end as well; nothing happens for any other.
    void moveChild(Control& child, int index);
    void toFront();
    /// Where the next children go, -1 for the end.
    void setInsertIndex(int index) { insertIndex_ = index; }
    bool isAncestorOf(const Control& other) const;
    /// `observer.childChanged` is called for this control as well.
    void addObserver(Control& observer);
    void removeObserver(Control& observer);

    // Bounds. A coordinate that differs by no more than kLayoutTolerance counts as the same.
    const Rect& localBounds() const { return localBounds_; }
    const Rect& placedBounds() const { return placedBounds_; }
    void setBounds(const Rect& rect);
    void setPosition(Point point);
    void setSize(float width, float height);
    void setWidth(float width) { setSize(width, bounds.value().height()); }
    void setHeight(float height) { setSize(bounds.value().width(), height); }
    void setLeft(float left) { setPosition({left, bounds.value().top}); }
    void setTop(float top) { setPosition({bounds.value().left, top}); }
    Point toWindow(Point point) const;
    Rect toWindow(const Rect& rect) const;
    Rect windowBounds() const { return toWindow(localBounds_); }

    // Hit testing.
    bool isInside(Point point);
    /// The topmost child there, or null.
    Control* childAt(Point point);
    /// Whether the control and all above it are visible and not wholly transparent.
    bool isShown() const;
    /// The whole of it can be seen and used from the keyboard: shown, and enabled with all above it.
    bool isReachable() const;

    // Routing: the event goes to the child under the point, unless this control has the pointer.
    void routePress(int button, Point point, int modifiers);
    void routeMove(Point point, int modifiers);
    void routeRelease(int button, Point point, int modifiers);
    bool routeWheel(WheelPhase phase, Point point, int modifiers, const WheelMove& move);
    /// The child under the pointer, this control itself, or null.
    Control* hovered() const { return hovered_; }
    void setHovered(Control* control);
    bool hasCapture() const { return capture_ != Capture::None; }
    /// A press that has lost its meaning ends here, outside the control.
    virtual void cancelMouse();

    // What happens to it. The defaults raise the event of the same name.
    virtual void click() { onClick.raise(this); }
    virtual void doubleClick() { onDoubleClick.raise(this); }
    virtual void rightClick() { onRightClick.raise(this); }
    virtual void mouseDown(int button, Point point, int modifiers);
    virtual void mouseEnter() { onMouseEnter.raise(this); }
    virtual void mouseLeave() { onMouseLeave.raise(this); }
    virtual void mouseMove(Point point, int modifiers);
    virtual void mouseUp(int button, Point point, int modifiers);
    /// True if the control has used it. The default offers `wheelAmount` and `wheelPixels` what moves.
    virtual bool wheel(WheelPhase phase, Point point, int modifiers, const WheelMove& move);
    virtual bool wheelAmount(Point /*point*/, int /*modifiers*/, float /*amount*/, WheelAxis) {
        return false;
    }
    virtual bool wheelPixels(Point /*point*/, int /*modifiers*/, float /*pixels*/, WheelAxis) {
        return false;
    }
    virtual void pressStateChanged() {}
    virtual void resized() { onResize.raise(this); }
    virtual void refreshTree();
    /// `child` is null when all have been removed.
    virtual void childChanged(Control* child, Change change);

    // The keyboard.
    /// Whether Tab stops here.
    virtual bool takesFocus() const { return false; }
    /// Whether Tab stays inside while this control is shown, as in a dialog.
    virtual bool holdsFocus() const { return false; }
    /// Whether keys are text for it, which no shortcut of a host's may take away.
    virtual bool takesText() const { return false; }
    /// True if the control has used the key; else its parent is asked.
    virtual bool keyDown(const KeyPress& /*key*/) { return false; }
    virtual void focusChanged(bool /*hasFocus*/) {}
    /// What the focus ring surrounds; empty for no ring.
    virtual Rect focusBounds() { return localBounds_; }
    /// Drawn over the control while it has the keyboard, in place of the ring; null for the ring.
    virtual const Bitmap* focusPicture() const { return nullptr; }
    /// Makes `control`, a child or this control itself, the one whose keys these are; null takes the focus
    /// away from the whole tree.
    virtual void setFocus(Control* control);
    void takeFocus() { setFocus(this); }
    Control* focused() const { return focused_; }

    // Painting.
    virtual void paint(Canvas& /*canvas*/) {}
    /// As an overlay shows the control.
    virtual void paintState(Canvas& canvas, int /*state*/) { paint(canvas); }
    /// The part that an overlay can be hit in.
    virtual Rect hotBounds() { return localBounds_; }
    /// The opacity of the control's own picture there, 0 to 255.
    virtual int alphaAt(Point /*point*/) { return 255; }
    virtual void drawTree(Canvas& canvas);
    /// Asks for the part to be painted again. Inside an update block all parts become one.
    void markDirty(const Rect& rect);
    void markDirty() { markDirty(localBounds_); }
    /// The part is to be painted again, now; the parent hears of it.
    virtual void invalidate(const Rect& rect);
    const Rect& opaqueRect() const { return opaqueRect_; }
    const Rect& childrenOpaque() const { return childrenOpaque_; }

    void propertyChanged(AbstractProperty& property) override;
    void linkRemoved(Component* other) override;

protected:
    void update() override;
    bool hasPending() const override;
    /// Moves the children after the control has grown.
    virtual void layoutChildren(Point growth);

    bool isDragging() const { return dragging_; }
    Point lastMouse() const { return lastMouse_; }
    bool isDestroying() const { return destroying_; }

private:
    friend class RootControl;
    enum class Capture { None, Press, Wheel };

    void boundsChanged();
    void parentChanged();
    void looksChanged();
    void focusRingChanged();
    void insertChild(Control& child);
    void removeChild(Control& child);
    void report(Change change);
    void recomputeOpaque();
    void dragTo(Point point);
    void takeCapture(Capture capture);
    void releaseCapture();
    void clearHoverChain();
    void leaveHover();

    Rect placedBounds_;  ///< what `bounds` was when it last took effect
    Rect localBounds_;
    std::vector<Control*> children_;  ///< in the order of painting: the last is on top
    bool destroying_ = false;
    bool dragging_ = false;
    Control* focused_ = nullptr;  ///< the next one on the way to the keyboard's control, or this, or null
    int insertIndex_ = -1;
    Capture capture_ = Capture::None;
    Control* hovered_ = nullptr;
    Point lastMouse_;
    Point pressPoint_;  ///< in the window while the wheel holds the pointer
    bool pressed_ = false;
    bool rightPressed_ = false;
    std::vector<Control*> observers_;
    Rect childrenOpaque_;
    Rect opaqueRect_;
    Control* previousParent_ = nullptr;
    Rect previousBounds_;  ///< what is to be painted again
};

}  // namespace vanta::gui
