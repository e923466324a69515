#pragma once

#include <memory>
#include <string>

#include "gui/controls/rollover_value_control.hpp"
#include "gui/controls/value_drag_mapper.hpp"

namespace vanta::gui {

/// A slider: a thumb in a track, upright where it is at least as high as wide. One of fewer than 100 steps
/// jumps to a click on the track; any other is dragged from anywhere.
class Switch : public RolloverValueControl {
public:
    /// What sliders of one kind share. Their interface owns it.
    class Style : public Component {
    public:
        explicit Style(UserInterface& interface);
        /// What has no name, or cannot be read, is empty.
        void setImages(const std::string& trackAtRest, const std::string& trackHovered,
                       const std::string& thumbAtRest, const std::string& thumbHovered);

        std::unique_ptr<Bitmap> track;
        std::unique_ptr<Bitmap> trackActive;
        std::unique_ptr<Bitmap> thumbNormal;
        std::unique_ptr<Bitmap> thumbActive;
    };

    explicit Switch(UserInterface& interface, Animator* animatedBy = nullptr, Style* sharedStyle = nullptr);

    /// An end of the track that is 0 leaves half a thumb, so that the thumb stays inside.
    Property<bool> autoSize{this, true};
    /// From the first edge of the control to the track that the thumb's middle runs along, and from there to
    /// the last edge; in logical units, from the left or the top.
    Property<float> trackStart{this, 0.0f};
    Property<float> trackEnd{this, 0.0f};
    Property<float> fineFactor{this, 0.1f};

    Style& style() const { return *style_; }
    bool isVertical() const { return vertical_; }
    float trackLength() const;
    /// Of the thumb's middle, along the track.
    float thumbPosition() const;
    Rect thumbBounds() const;
    bool isDraggingThumb() const { return dragging_; }
    /// The value whose thumb is nearest to a point of the control.
    int valueAtPoint(Point point) const;

    void mouseDown(int button, Point point, int modifiers) override;
    void mouseMove(Point point, int modifiers) override;
    void mouseUp(int button, Point point, int modifiers) override;
    void mouseLeave() override;
    bool wheel(WheelPhase phase, Point point, int modifiers, const WheelMove& move) override;
    void resized() override;
    void propertyChanged(AbstractProperty& property) override;
    void paint(Canvas& canvas) override;

protected:
    virtual void paintTrack(Canvas& canvas);
    virtual void paintThumb(Canvas& canvas);

private:
    bool isDiscrete() const;
    float along(Point point) const { return vertical_ ? point.y : point.x; }
    float thumbLength() const;
    float startOfTrack() const;
    float endOfTrack() const;
    void updateMapper();

    Style* style_;
    RolloverManager thumbRollover_{*this};
    bool vertical_ = true;
    bool dragging_ = false;
    bool pressedTrack_ = false;  ///< of a discrete one, which jumps when the press ends there
    ValueDragMapper mapper_;
};

}  // namespace vanta::gui
