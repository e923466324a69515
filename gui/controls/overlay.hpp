#pragma once

#include <vector>

#include "gui/animation/animated_control.hpp"
#include "gui/graphics/color.hpp"

namespace vanta::gui {

/// A translucent sheet over the whole interface through which chosen controls show.
class Overlay : public AnimatedControl {
public:
    enum class Behaviour {
        HitAnywhere = 1,  ///< within the target's bounds
        Refused = 2,      ///< under the pointer, but not to be picked
        HitPicture = 3,   ///< where the target itself would be hit
    };
    struct Target {
        Control* control;
        Behaviour behaviour;
    };

    using AnimatedControl::AnimatedControl;

    Property<Color> sheetColor{this, Color::of(0x80000000)};

    void addTarget(Control& control, Behaviour behaviour);
    const std::vector<Target>& targets() const { return targets_; }
    /// In which targets are drawn: indices of `targets`. The order of adding unless set.
    void setOrder(std::vector<int> order) { order_ = std::move(order); }
    /// The topmost target at a point of the window, or -1.
    int targetAt(Point windowPoint) const;
    /// In the window; out of the way of a sibling inside the target.
    Point targetCenter(int index) const;
    /// How a target is painted.
    virtual int targetState(int /*index*/) const { return 0; }

    void show();
    /// Fades out and deletes itself afterwards.
    void hide();

    void paint(Canvas& canvas) override;
    void deferredCall(int argument) override;
    void linkRemoved(Component* other) override;
    void propertyChanged(AbstractProperty& property) override;

private:
    bool isHit(const Target& target, Point windowPoint) const;
    void fadedOut(void* sender);

    std::vector<Target> targets_;
    std::vector<int> order_;
};

}  // namespace vanta::gui
