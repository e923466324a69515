#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "gui/controls/alignment.hpp"
#include "gui/graphics/bitmap.hpp"
#include "gui/graphics/color.hpp"
#include "gui/graphics/text.hpp"
#include "interface/meters/grid_walk.hpp"
#include "interface/meters/level_display.hpp"

namespace vanta::interface {

/// Where numbers stand: beside the lines, within the margins of the grid, or in the margin.
enum class LabelPosition { Inside, Margin };

/// The lines and numbers of a scale. A control has one as a member, sets its properties, and calls `paint`
/// from its own; the lines are looked for and the numbers rendered when they are needed, and kept until
/// something has changed. It notices another size, scale or mapping by itself.
///
///     class Plot : public LevelDisplay {
///         void paint(gui::Canvas& canvas) override { drawCurves(canvas); grid.paint(canvas); }
///         DisplayGrid grid{*this};    // follows the plot's own mapping
///     };
///
/// To stand beside a display instead of on it, make a DisplayGridControl and `setDisplay` its grid.
class DisplayGrid : public LevelMapping,
                    public PropertyOwner,
                    public gui::DeviceBacking::BackingScaleListener,
                    public LevelDisplay::MappingObserver {
public:
    /// A grid of its own, from `minimum` to `maximum` over the control.
    explicit DisplayGrid(gui::Control& control);
    /// The grid of a display.
    explicit DisplayGrid(LevelDisplay& display);
    virtual ~DisplayGrid();
    DisplayGrid(const DisplayGrid&) = delete;
    DisplayGrid& operator=(const DisplayGrid&) = delete;

    /// Insets of the lines from the edges of the control. Along the scale no line leaves them.
    Property<gui::Rect> margins{this, gui::Rect{}};
    /// From a level of the display to the one that is counted and shown: K on a K-scale. `extras` and the
    /// levels of ticks include it.
    Property<float> labelShift{this, 0.0f};
    /// A level from which steps are counted.
    Property<float> tickOrigin{this, 0.0f};
    /// Steps to choose from, ascending, dB; null for 3, 6, 10. The list outlives the grid.
    Property<const std::vector<float>*> steps{this, nullptr};
    Property<bool> showLabels{this, true};
    Property<bool> showLines{this, true};
    /// Areas that no line enters and no number touches.
    VectorProperty<gui::Rect> exclusions{this, {}};
    /// The level whose line and number heed no exclusion; the number stands out.
    Property<std::optional<float>> exemptLevel{this, std::nullopt};
    Property<gui::Alignment> labelAlignment{this, gui::Alignment::Left};
    /// Of printf. One that contains ".0" has no steps below 1.
    Property<std::string> format{this, "%.2f"};
    /// Added to a level in the number alone.
    Property<float> numberShift{this, 0.0f};
    Property<float> labelInset{this, 8.0f};
    Property<LabelPosition> labelPosition{this, LabelPosition::Margin};
    Property<gui::Color> lineColor{this, gui::Color::of(0xFF000000)};
    /// Logical units between two numbers, at least.
    Property<float> minimumSpacing{this, 30.0f};
    /// Without a display.
    Property<float> maximum{this, 1.0f};
    Property<float> minimum{this, -1.0f};
    /// A display of another orientation has no say.
    Property<Orientation> orientation{this, Orientation::Vertical};
    /// Added to all positions: where the display begins, as the control sees it.
    Property<float> positionShift{this, 0.0f};
    /// Levels that have a line in any case, from the left or the top on.
    VectorProperty<float> extras{this, {}};
    Property<gui::Color> labelColor{this, gui::Color::of(0xFF000000)};
    /// Points.
    Property<float> fontSize{this, 7.5f};

    gui::Control& control() const { return control_; }
    /// Null: linear over the control.
    void setDisplay(LevelDisplay* display);
    LevelDisplay* display() const { return display_; }

    float levelToPosition(float level) const override;
    float positionToLevel(float position) const override;
    /// Where the grid has a level of the display.
    float positionOf(float displayLevel) const { return levelToPosition(displayLevel + labelShift); }
    /// In the order of the walk: from the top, or from the left; on a horizontal scale of dB from the right.
    const std::vector<Tick>& ticks();
    /// Of the numbers that were painted last.
    const std::vector<gui::Rect>& numberAreas() const { return numberAreas_; }
    /// Changes whenever the ticks may have.
    int revision() const { return revision_; }
    /// Everything is to be found and rendered anew.
    void invalidate();
    void paint(gui::Canvas& canvas);

    void mappingChanged() override { invalidate(); }
    void displayGone() override { display_ = nullptr; }
    void backingScaleChanged() override { invalidate(); }
    void propertyChanged(AbstractProperty& property) override;

private:
    enum class State { Dirty, TicksFound, LabelsPainted };

    LevelDisplay* mappedDisplay() const;
    bool isDecibel() const;
    bool hasExtent() const;
    float extent() const;
    GridRange range() const;
    std::span<const float> stepList() const;
    float deviceScale() const;

    void paintLine(gui::Canvas& canvas, const Tick& tick) const;
    void paintLabels();
    gui::Rect labelStrip(float longest) const;
    gui::Rect labelBounds(const Tick& tick, gui::Text& text) const;
    bool hasRoom(const Tick& tick, const gui::Rect& bounds) const;
    std::string numberOf(const Tick& tick) const;

    gui::Control& control_;
    LevelDisplay* display_ = nullptr;
    std::unique_ptr<gui::Bitmap> labels_;
    gui::Point labelOrigin_;
    std::vector<gui::Rect> numberAreas_;
    std::vector<Tick> ticks_;
    std::unique_ptr<gui::Text> text_;
    State state_ = State::Dirty;
    gui::Rect foundFor_;  ///< the bounds of the control
    int revision_ = 0;
};

}  // namespace vanta::interface
