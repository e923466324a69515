#pragma once

#include <array>
#include <span>
#include <vector>

#include "foundation/property.hpp"
#include "gui/graphics/canvas.hpp"
#include "gui/graphics/curve.hpp"
#include "gui/graphics/gradient.hpp"
#include "interface/display/column_queue.hpp"
#include "interface/display/flat_run.hpp"
#include "wave/level_source.hpp"

namespace vanta::interface {

class LevelTimeDisplay;

/// A curve of a level over time. A fast one reads every sample of an audio source and has a column of its
/// own for each pixel; a slow one reads one value a frame and goes through them smoothly.
class DisplayCurve final : public PropertyOwner {
public:
    explicit DisplayCurve(LevelTimeDisplay& display);

    // Colours: the area is shaded from its top to the line, and from the line to its bottom.
    Property<gui::Color> aboveColor{this, gui::Color{}};   ///< at the top, and just above the line
    Property<gui::Color> belowColor{this, gui::Color{}};   ///< just below the line
    Property<gui::Color> bottomColor{this, gui::Color{}};  ///< at the bottom
    Property<gui::Color> lineColor{this, gui::Color::of(0xFFFFFFFF)};
    /// Takes the place of `lineColor` unless it is empty: over the height of the area.
    Property<gui::Gradient> lineGradient{this, gui::Gradient{}};
    Property<float> lineWidth{this, 1.0f};  ///< logical units
    /// What is cut off the display's height, in logical units.
    Property<int> topMargin{this, 0};
    Property<int> bottomMargin{this, 0};

    /// One of the two, or none: then the curve rests. Whoever sets one keeps it alive.
    Property<wave::AudioSource*> audioSource{this, nullptr};
    Property<wave::LevelSource*> levelSource{this, nullptr};
    Property<RealTimeOperation> operation{this, RealTimeOperation::Maximum};
    Property<float> release{this, 0.0f};    ///< what is left of a peak after a column, 0 to below 1
    Property<float> restLevel{this, 0.0f};  ///< linear

    struct Advance {
        int columns = 1;
        int wholeStep = 0;      ///< columns of a usual frame, cut
        bool infinite = false;  ///< the table grows, and all of it stays
        bool halving = false;
    };
    /// The most extreme level since it was last asked for, in the display's domain, and how many columns ago.
    struct Peak {
        float level;
        int age;
    };

    /// Something of it can be seen.
    bool isEnabled() const { return enabled_; }
    /// It is enabled, or was when the strip that is being written was painted.
    bool isActive() const { return enabled_ || painted_ >= 0; }
    bool isPrimed() const { return primed_; }
    int flatColumns() const { return flat_.columns(); }
    int queued() const { return queue_.size(); }
    int jitter() const { return queue_.jitter(); }
    /// Positions of the columns that came last, behind those before; in Infinite of all. A drawing at x reads
    /// entry x + 2, so that the two newest are what a line needs to its right.
    std::span<const float> table() const { return table_; }
    /// Of the table as it was before a halving, with what has come since.
    std::span<const float> fullTable(bool halving) const { return halving ? snapshot_ : table_; }
    float restPosition() const { return positionOf(restLevel); }
    Peak takePeak();

    /// Takes all that the source, which is locked, has recorded.
    void collect(int samplesPerColumn);
    void advance(const Advance& advance);
    /// Forgets everything.
    void reset();
    void beginHalving() { snapshot_ = table_; }
    /// To the columns that the table had when the halving began, times `factor`.
    void squeeze(float factor);
    /// Makes ready what the next halving leads to, or the one that is under way.
    void halve(bool halving);

    /// Paints the newest columns into a strip: `area` has their width.
    void paintStrip(gui::Canvas& canvas, const gui::Rect& area, int stripWidth);
    void paintTable(gui::Canvas& canvas, const gui::Rect& area, int alpha) const;
    /// The table as a halving leaves it, as of the last call of `halve`.
    void paintHalved(gui::Canvas& canvas, const gui::Rect& area) const;
    void paintRest(gui::Canvas& canvas, const gui::Rect& area, int alpha) const;

    void propertyChanged(AbstractProperty& property) override;

private:
    ColumnRule rule() const;
    bool isSlow() const { return levelSource.value() && !audioSource.value(); }
    float levelOf(float linear) const;
    float positionOf(float linear) const;
    FlatRun::Limits flatLimits() const;
    std::size_t makeRoom(const Advance& advance);
    void fillFast(std::span<float> out, int wholeStep);
    void fillSlow(std::span<float> out);
    void notePeak(float level);
    void compress(std::span<const float> table, float factor, std::vector<float>& out) const;
    void paint(gui::Canvas& canvas, const gui::Curve& shape, const gui::Rect& area, int alpha) const;

    LevelTimeDisplay& display_;
    bool enabled_ = true;
    bool primed_ = false;  ///< columns have begun to come
    int painted_ = 0;      ///< columns until what was painted last has left its strip
    ColumnQueue queue_;
    std::vector<float> table_;
    std::vector<float> snapshot_;
    std::vector<float> halved_;      ///< of the snapshot
    std::array<float, 4> recent_{};  ///< positions of a slow curve, the oldest first
    float peak_ = 0.0f;              ///< linear
    int peakAge_ = 0;
    FlatRun flat_;
};

}  // namespace vanta::interface
