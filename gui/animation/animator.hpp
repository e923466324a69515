#pragma once

#include <memory>
#include <vector>

#include "foundation/notify_event.hpp"
#include "gui/tree/component.hpp"
#include "gui/tree/control.hpp"

namespace vanta::gui {

class Timer;

/// What an Animator calls on every frame. Whoever dies while it is in one calls `Animator::forget`.
class AnimatedObject {
public:
    virtual ~AnimatedObject() = default;
    virtual void animate() = 0;
    /// The animator has no more use for it. What belongs to nobody else deletes itself.
    virtual void deleteSelf() = 0;
};

/// Drives all that moves in an interface. The frame is the render thread's where there is one, under the
/// root's lock, else a timer's.
///
/// What comes within a frame starts with the next one. What leaves within a frame is not called again, and is
/// deleted when the frame has ended.
class Animator : public Component {
public:
    explicit Animator(UserInterface& interface);
    ~Animator() override;

    Property<bool> running{this, false};
    /// Without a render thread.
    Property<int> framesPerSecond{this, 10};
    /// At the start of each frame.
    NotifyEvent onFrame;

    /// `target` is the address of what the object drives, null for nothing: of those with the same target
    /// only the latest runs. `control` is whose end is the end of the object as well, or null. Without an
    /// object it ends all of the control's.
    void add(AnimatedObject* object, Control* control, const void* target);
    void remove(AnimatedObject* object);
    void removeAll(const Control* control);
    void cancel(const void* target);
    /// As `remove`, without another call to the object.
    void forget(const AnimatedObject* object);

    void propertyChanged(AbstractProperty& property) override;

private:
    struct Entry {
        AnimatedObject* object = nullptr;  ///< null: to be swept at the end of the frame
        const Control* control = nullptr;
        const void* target = nullptr;
    };

    template <typename Matches>
    void drop(Matches matches);
    void frame(void* sender);
    void sweep();

    std::vector<Entry> objects_;
    std::vector<Entry> pending_;
    std::vector<AnimatedObject*> removed_;
    bool inFrame_ = false;
    std::unique_ptr<Timer> timer_;
};

}  // namespace vanta::gui
