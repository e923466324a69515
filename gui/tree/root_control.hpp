#pragma once

#include <algorithm>
#include <memory>

#include "foundation/critical_section.hpp"
#include "gui/tree/control.hpp"

namespace vanta::gui {

class Bitmap;
class Timer;

/// The control that is the window. The platform derives from it and calls its entries, inside a MessageScope,
/// with points in the window.
class RootControl : public Control, public LockedObject {
public:
    explicit RootControl(UserInterface& interface);
    ~RootControl() override;

    /// A message of the platform: holds the root's lock, and leaves it alone if a handler has deleted the
    /// root.
    class MessageScope {
    public:
        explicit MessageScope(RootControl& root);
        ~MessageScope();
        MessageScope(const MessageScope&) = delete;
        MessageScope& operator=(const MessageScope&) = delete;
        bool rootIsAlive() const { return *alive_; }

    private:
        RootControl& root_;
        std::shared_ptr<const bool> alive_;
    };

    /// Gives the lock away for the length of a nested event loop, so that the render thread goes on.
    class LockGivenAway {
    public:
        explicit LockGivenAway(RootControl& root);
        ~LockGivenAway();
        LockGivenAway(const LockGivenAway&) = delete;
        LockGivenAway& operator=(const LockGivenAway&) = delete;
        bool rootIsAlive() const { return *alive_; }

    private:
        RootControl& root_;
        std::shared_ptr<const bool> alive_;
        int depth_;
    };

    Property<bool> fullScreen{this, false};
    /// Height at the lower end that is left to whoever shows the interface. Set it before an interface fills
    /// the root.
    Property<float> footer{nullptr, 0.0f};

    /// What an interface fills.
    Rect content() const {
        const Rect& all = localBounds();
        return {all.left, all.top, all.right, std::max(all.bottom - footer, all.top)};
    }

    void platformMouseDown(int button, Point point, int modifiers);
    void platformMouseMove(Point point, int modifiers);
    void platformMouseUp(int button, Point point, int modifiers);
    void platformWheel(Point point, int modifiers, WheelMove move);
    /// The pointer has left the window.
    void platformMouseLeave();
    /// The press was lost: the window has no focus any more, or another has taken the pointer.
    void platformCancelMode();
    /// False: nobody wants the key, and the host should have it.
    bool platformKey(const KeyPress& key);

    /// The control that gets all of the pointer's events, or null.
    Control* mouseCapture() const { return mouseCapture_; }
    virtual void setMouseCapture(Control* control);
    /// Ends what draws on another thread, before the window goes.
    virtual void shutdownRendering() {}
    virtual void enterFullScreen() {}
    virtual void leaveFullScreen() {}
    bool isFullScreenChanging() const { return fullScreenChanging_; }

    /// What has to be painted, one box around everything; empty for nothing.
    const Rect& dirtyRect() const { return dirtyRect_; }
    Rect takeDirtyRect();
    void invalidate(const Rect& rect) override;
    void paint(Canvas& canvas) override;
    void drawTree(Canvas& canvas) override;

    /// The control at the end of the focus path, or null.
    Control* focusedControl() const;
    /// Another one is at its end.
    virtual void focusMoved() {}
    void setFocus(Control* control) override;
    /// Moves the focus to the next control that takes it, from the last to the first and round. False if
    /// there is none.
    bool moveFocus(bool backwards);
    /// Where the picture "FocusRing", or the control's own, is painted; empty for nowhere.
    Rect focusRingBounds() const;

    void propertyChanged(AbstractProperty& property) override;

protected:
    /// The press of the left button has not been released.
    bool isLeftDown() const { return leftDown_; }

private:
    friend class Control;

    void enterMessage();
    void leaveMessage();
    int withHostModifiers(int modifiers);
    Control& mouseTarget() { return mouseCapture_ ? *mouseCapture_ : *this; }
    Point targetPoint(Point windowPoint);
    void routeMoveToTarget(Point point, int modifiers);
    bool routeWheelToTarget(WheelPhase phase, Point point, int modifiers, const WheelMove& move);
    void startWheel(Point point, int modifiers);
    void endWheel(void* sender);
    void focusPathChanged();
    void forgetFocus(const Control& control);
    void focusRingMoved();
    void paintFocus(Canvas& canvas);

    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
    bool fullScreenChanging_ = false;
    bool secondaryPress_ = false;
    bool leftDown_ = false;
    int lockDepth_ = 0;  ///< of messages within messages; the interface's thread only
    Control* mouseCapture_ = nullptr;
    std::unique_ptr<Timer> wheelTimer_;  ///< runs while a wheel gesture lasts; made on first use
    Rect dirtyRect_;
    Control* focusOwner_ = nullptr;         ///< who was told last to have the focus
    Rect focusRing_;                        ///< where the ring was marked last
    std::unique_ptr<Bitmap> focusPicture_;  ///< made on first use
};

}  // namespace vanta::gui
