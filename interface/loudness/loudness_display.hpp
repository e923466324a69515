#pragma once

#include <memory>

#include "gui/graphics/bitmap.hpp"
#include "gui/graphics/text.hpp"
#include "interface/meters/display_grid_link.hpp"

namespace vanta::interface {

/// The lines between the scale of the loudness meter and the main scale, and the loudness range (EBU Tech
/// 3342) as a bracket along the former.
class LoudnessDisplay final : public DisplayGridLink {
public:
    explicit LoudnessDisplay(gui::UserInterface& interface, gui::Animator* animatedBy = nullptr);

    /// Gives the loudness range, whichever source the meter's own line follows.
    wave::LevelSource* rangeSource = nullptr;
    /// The part of the control that the lines cross, and where the bracket lies across the scale: its left,
    /// or its top. Along the scale it is cut at `first` and `last`, where its range goes on.
    void setPlaces(const gui::Rect& lines, float bracket, float first, float last);

    void animate() override;
    void paint(gui::Canvas& canvas) override;

protected:
    gui::Rect strip() const override { return lines_; }

private:
    void paintUpright(gui::Canvas& canvas, float start, float end);
    void paintLying(gui::Canvas& canvas, float start, float end);
    float besideTarget(float left, float width) const;
    void clearNumbers(gui::Canvas& canvas, const gui::Rect& room) const;
    void write(gui::Canvas& canvas, gui::Text& text, gui::Point at) const;

    gui::Rect lines_;
    float bracket_ = 0.0f;
    float first_ = 0.0f;
    float last_ = 0.0f;
    float range_ = 0.0f;
    float low_ = -180.0f;
    std::unique_ptr<gui::Text> labelText_;
    std::unique_ptr<gui::Bitmap> rangeImage_;
    std::unique_ptr<gui::Bitmap> rangeShadow_;
    std::unique_ptr<gui::Text> numberText_;
};

}  // namespace vanta::interface
