#pragma once

#include "gui/controls/knob_geometry.hpp"
#include "gui/controls/rollover_value_control.hpp"
#include "gui/controls/value_drag_mapper.hpp"

namespace vanta::gui {

/// Turned by dragging up and down, by its grip on the ring, by the wheel or by keys.
class Knob : public RolloverValueControl {
public:
    /// What knobs of one size share. Their interface owns it.
    class Style : public Component {
    public:
        using Component::Component;
        /// Degrees on each side of the value's angle where the ring can be gripped.
        Property<float> ringWidth{nullptr, 30.0f};
        /// Of the ring, in logical units; at 0 the outer one is that of the knob.
        Property<float> outerRadius{nullptr, 0.0f};
        Property<float> innerRadius{nullptr, 2.0f};
        Property<float> hotInset{nullptr, 0.0f};
        /// A cap that is drawn over the knob and can be dragged. Without one there is only the ring.
        Property<bool> hasOverlay{nullptr, true};
    };
    enum class Hover { Outside, OverKnob, OverRing };
    enum class Drag { None, Linear, Rotary };

    /// Without a style it makes its own.
    Knob(UserInterface& interface, Animator* animatedBy = nullptr, Style* style = nullptr);

    Property<bool> rotaryDrag{nullptr, true};
    /// A turn does not cross the gap of the sweep.
    Property<bool> jumpGuard{nullptr, true};
    /// Degrees.
    Property<float> sweep{this, 300.0f};
    Property<float> startOffset{this, 0.0f};
    Property<bool> showDefault{this, false};
    Property<float> fineFactor{this, 0.1f};

    Style& style() const { return *style_; }
    KnobGeometry geometry() const { return {minimum, maximum, sweep, startOffset}; }
    /// Of the value: turns clockwise from the top.
    float angle() const { return geometry().angleOf(value); }
    Hover hoverState() const { return hoverState_; }
    Drag dragMode() const { return dragMode_; }

    Rect hotBounds() override;
    int alphaAt(Point point) override;
    void mouseDown(int button, Point point, int modifiers) override;
    void mouseMove(Point point, int modifiers) override;
    void mouseUp(int button, Point point, int modifiers) override;
    void mouseLeave() override;
    bool wheel(WheelPhase phase, Point point, int modifiers, const WheelMove& move) override;
    void propertyChanged(AbstractProperty& property) override;

protected:
    /// The opacity of the knob's picture, 0 to 255.
    virtual int pictureAlphaAt(Point /*point*/) { return 255; }

private:
    Point fromCentre(Point point) const;
    float outerRadius() const;
    bool isInRing(Point fromCentre) const;
    Hover hoverAt(Point point) const;
    void setHover(Hover hover);
    void beginDrag(Point point, int modifiers);
    void turnTo(Point point);

    Style* style_;
    ValueDragMapper mapper_;
    Drag dragMode_ = Drag::None;
    bool wasReset_ = false;    ///< by the press that is still held
    float gripOffset_ = 0.0f;  ///< from the grip's middle to where it was taken, in turns
    Hover hoverState_ = Hover::Outside;
};

}  // namespace vanta::gui
