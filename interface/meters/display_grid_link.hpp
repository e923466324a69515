#pragma once

#include <memory>
#include <vector>

#include "gui/animation/animated_control.hpp"
#include "gui/animation/animator.hpp"
#include "gui/graphics/gradient.hpp"
#include "interface/meters/display_grid.hpp"
#include "wave/level_source.hpp"

namespace vanta::interface {

/// Lines across a strip between two scales, from each line of one to the same level of the other: from
/// `fromGrid` at the left or the top to `toGrid` at the right or the bottom. A source has a line of its own
/// at its level. The grids may belong to controls anywhere in the same window, and are cleared before they
/// go.
class DisplayGridLink : public gui::AnimatedControl, public gui::AnimatedObject {
public:
    explicit DisplayGridLink(gui::UserInterface& interface, gui::Animator* animatedBy = nullptr);
    ~DisplayGridLink() override;

    Property<gui::Color> lineColor{this, gui::Color::of(0x80000000)};
    /// Behind the lines.
    Property<gui::Color> fillColor{this, gui::Color{}};
    /// Of the line at the level of the source.
    Property<gui::Color> linkColor{this, gui::Color::of(0xFF0000FF)};
    /// Logical units.
    Property<float> linkWidth{this, 1.0f};
    /// Takes the place of `linkColor`: over the scale, from its top or left.
    Property<gui::Gradient> linkGradient{this, gui::Gradient{}};
    /// For what is written in it.
    Property<gui::Color> textColor{this, gui::Color::of(0xFF000000)};
    /// The lines have rounded corners.
    Property<bool> soften{this, true};

    wave::LevelSource* source = nullptr;
    /// Null for none.
    void setGrids(DisplayGrid* from, DisplayGrid* to);
    DisplayGrid* fromGrid() const { return from_; }
    DisplayGrid* toGrid() const { return to_; }

    int alphaAt(gui::Point) override { return 0; }
    void animate() override;
    void deleteSelf() override {}
    void propertyChanged(AbstractProperty& property) override;
    void paint(gui::Canvas& canvas) override;

protected:
    /// Where a level of the displays lies on the far side, in the coordinates of this control.
    float farPosition(float displayLevel) const;
    /// What the lines cross.
    virtual gui::Rect strip() const { return localBounds(); }
    /// They have to be found anew.
    void linesChanged();
    bool isVertical() const { return to_->orientation == Orientation::Vertical; }

private:
    /// What the lines were made for.
    struct Basis {
        int fromRevision;
        int toRevision;
        float fromShift;
        float toShift;
        gui::Rect strip;
        bool operator==(const Basis&) const = default;
    };

    Basis basis() const;
    float shiftOf(const DisplayGrid& grid) const;
    float placeOf(float farPosition) const;
    float nearPosition(float displayLevel) const;
    std::vector<float> wayOf(float displayLevel) const;
    bool isWithin(float position) const;
    void findLines();
    void drawWay(gui::Canvas& canvas, const std::vector<float>& way, gui::Color color, float width) const;

    DisplayGrid* from_ = nullptr;
    DisplayGrid* to_ = nullptr;
    bool valid_ = false;
    Basis basis_{};
    std::vector<std::vector<float>> lines_;
    float lastLevel_ = -190.0f;
};

}  // namespace vanta::interface
