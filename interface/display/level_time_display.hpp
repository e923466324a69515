#pragma once

#include <array>
#include <memory>
#include <vector>

#include "foundation/interval_timer.hpp"
#include "gui/graphics/text.hpp"
#include "interface/display/column_cache.hpp"
#include "interface/display/display_curve.hpp"
#include "interface/display/peak_label_ring.hpp"
#include "interface/display/pen_motion.hpp"
#include "interface/display/scroll_clock.hpp"
#include "interface/display/strip_ring.hpp"
#include "interface/meters/display_grid.hpp"
#include "interface/meters/level_display.hpp"

namespace vanta::interface {

/// Levels over time, from right to left. Frames come as they come and audio in batches of its own; the
/// picture moves evenly all the same, by columns that a clock counts and a control loop makes of the audio.
/// Each column is painted once, but for the Infinite mode, which keeps all columns and squeezes them to a
/// half whenever the picture is full.
///
/// While nothing of it can be seen it sleeps: it reads no audio, and starts with an empty picture when it
/// wakes. While all curves are flat it repaints nothing.
class LevelTimeDisplay : public LevelDisplay, private PeakLabelRing::Viewer {
public:
    using Curve = DisplayCurve;

    static constexpr float kUsualSpeed = 120.0f;

    /// Without an animator whoever has it calls `animate`.
    explicit LevelTimeDisplay(gui::UserInterface& interface, gui::Animator* animatedBy = nullptr);

    /// Of everything but the grid, 0 to 255.
    Property<int> displayAlpha{this, 255};
    /// How far left of the pen its picture starts, in logical units.
    Property<float> lineOffset{this, 0.0f};
    /// The curve whose peaks get labels; none if there is no such curve.
    Property<int> labelCurve{this, -1};
    /// Columns that the pen moves right for each column of time.
    LimitedProperty<float> penDrift{this, 0.0f, 1.0f, 0.0f};
    /// Logical units a second; 0 for Infinite.
    Property<float> speed{this, kUsualSpeed};
    /// Of the audio, Hz.
    Property<float> sampleRate{this, 44100.0f};

    /// The result is the index of the curve. `above` is also the colour at the top, `below` that at the
    /// bottom.
    int addAudioCurve(wave::AudioSource* source, RealTimeOperation operation, gui::Color line,
                      gui::Color above, gui::Color below);
    int addLevelCurve(wave::LevelSource* source, gui::Color line, gui::Color above, gui::Color below);
    Curve& curveAt(int index) { return *curves_[static_cast<std::size_t>(index)]; }

    DisplayGrid& grid() { return grid_; }
    /// What is drawn at the pen, and behind a label; nothing while they are empty.
    gui::Bitmap& incomingLine() { return *incomingLine_; }
    gui::Bitmap& peakLabel() { return *peakLabel_; }

    /// Fades to `target`, slowly when it appears.
    void fadePicture(int target);
    /// The next frame starts with an empty picture.
    void restart() { needsReset_ = true; }
    /// Curves look otherwise: from the next column on, in Infinite at once.
    void curvesChanged();

    bool isInfinite() const { return infinite_; }
    bool isHalving() const { return squeezeFrames_ != 0; }
    /// Of Infinite, in logical units a second; halved with each compression.
    float infiniteSpeed() const { return infiniteSpeed_; }
    const ScrollClock& clock() const { return clock_; }
    const PeakLabelRing& labels() const { return labels_; }
    /// Where the newest column is drawn, snapped to device pixels.
    float penPosition() const;
    /// Where a label is drawn.
    gui::Rect labelBounds(const PeakLabel& label) const;

    void animate() override;
    void paint(gui::Canvas& canvas) override;
    void resized() override;
    void refreshTree() override;
    void propertyChanged(AbstractProperty& property) override;

private:
    float width() const { return localBounds().width(); }
    float height() const { return localBounds().height(); }
    float deviceScale() const;
    float rate() const { return infinite_ ? infiniteSpeed_ : speed.value(); }

    bool isActive() const;
    void sleep();
    void reset();
    void readAudio();
    int samplesPerColumn(const Curve& first) const;
    void advance(int columns);
    void writeStrips(int columns);
    bool isFlat() const;
    void movePen();
    bool hasMoved() const;

    const Curve* leadingCurve() const;
    int infiniteColumns() const;
    void squeeze();
    float squeezeFactor() const;

    bool hasLabels() const;
    PeakLabelRing::Picture labelPicture() const;
    void advanceLabels(int columns);
    void labelPublished(PeakLabel& label) override;
    void labelLeaves(PeakLabel& label) override;
    void fade(PeakLabel& label, int target);

    void paintScrolling(gui::Canvas& canvas);
    void paintInfinite(gui::Canvas& canvas);
    void paintTables(gui::Canvas& canvas, int opacity) const;
    void paintTablesFrom(gui::Canvas& canvas, float left) const;
    float settledColumns() const;
    void extendHalved();
    void paintPen(gui::Canvas& canvas, float x);
    void paintLabels(gui::Canvas& canvas);

    std::vector<std::unique_ptr<Curve>> curves_;
    DisplayGrid grid_{*this};
    std::unique_ptr<gui::Bitmap> incomingLine_;
    std::unique_ptr<gui::Bitmap> peakLabel_;
    bool infinite_ = false;
    bool needsReset_ = false;
    std::unique_ptr<IntervalTimer> frameTimer_;
    ScrollClock clock_;
    PenMotion pen_;
    int penAlpha_ = 255;  ///< of the pen, and of what lies to its right
    StripRing strips_;

    float infiniteSpeed_ = kUsualSpeed;
    int squeezeFrames_ = 0;  ///< length of the halving that is under way, 0 for none
    int squeezeCount_ = 0;   ///< of which so many frames have passed
    int restColumns_ = 0;    ///< written since all curves have been flat
    Spline ease_;
    ColumnCache cache_;   ///< of Infinite
    ColumnCache halved_;  ///< what takes its place after the next halving

    PeakLabelRing labels_{*this};
    std::array<std::unique_ptr<gui::Text>, PeakLabelRing::kCount> labelTexts_;
};

}  // namespace vanta::interface
