#pragma once

#include <memory>
#include <string>

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
        explicit Style(UserInterface& interface);

        /// Degrees on each side of the value's angle where the ring can be gripped.
        Property<float> ringWidth{nullptr, 30.0f};
        /// Of the ring, in logical units; at 0 the outer one is that of the knob.
        Property<float> outerRadius{nullptr, 0.0f};
        Property<float> innerRadius{nullptr, 2.0f};
        Property<float> hotInset{nullptr, 0.0f};

        /// The knob, and the pointer over it that is turned: at rest, under the mouse, with its grip dragged
        /// and with the mouse over the grip. A knob without an overlay is a ring only. What has no name, or
        /// cannot be read, is empty.
        void setImages(const std::string& backNormal, const std::string& backActive,
                       const std::string& overlayNormal, const std::string& overlayActive,
                       const std::string& overlayDown, const std::string& overlayRotate);
        /// The same by the names that all knobs' pictures have: "KnobLarge" and what it shows; with that of
        /// the focus.
        void setImages(const std::string& family);
        bool hasOverlay() const { return !overlayNormal->isEmpty(); }

        std::unique_ptr<Bitmap> backNormal;
        std::unique_ptr<Bitmap> backActive;
        std::unique_ptr<Bitmap> overlayNormal;
        std::unique_ptr<Bitmap> overlayActive;
        std::unique_ptr<Bitmap> overlayDown;
        std::unique_ptr<Bitmap> overlayRotate;
        /// Over the knob while it has the keyboard; empty for the ring of all controls.
        std::unique_ptr<Bitmap> focus;
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
    void refreshTree() override;
    void paint(Canvas& canvas) override;
    const Bitmap* focusPicture() const override {
        return style_->focus->isEmpty() ? nullptr : style_->focus.get();
    }

private:
    const Bitmap& overlay() const;
    void turnOverlay();
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
    std::unique_ptr<Bitmap> rotated_;      ///< the overlay at the value's angle; made on first use
    const Bitmap* rotatedFrom_ = nullptr;  ///< null: to be turned anew
    float rotatedBy_ = 0.0f;               ///< turns
};

}  // namespace vanta::gui
