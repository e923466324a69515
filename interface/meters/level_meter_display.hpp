#pragma once

#include <array>
#include <memory>
#include <vector>

#include "foundation/channel_layout.hpp"
#include "interface/meters/level_display.hpp"
#include "interface/meters/level_meter_style.hpp"
#include "interface/meters/level_text.hpp"
#include "wave/level_source.hpp"

namespace vanta::interface {

/// Bars of up to ten channels, from bitmaps that are coloured once. Each bar has a fast source and, on top of
/// it, may have a slow one. A source gives two readings: where the bar ends, and a line at its peak.
class LevelMeterDisplay : public LevelDisplay {
public:
    static constexpr int kMostBars = 10;
    /// In place of a layout: as many bars as have sources.
    static constexpr int kBySources = -1;

    /// A level at which the colour of the bars changes. A bar's end keeps to the colour of its level.
    struct ColorStop {
        float position;
        float level;
    };

    explicit LevelMeterDisplay(gui::UserInterface& interface, gui::Animator* animatedBy = nullptr,
                               LevelMeterStyle* sharedStyle = nullptr);

    /// Of the channels' letters from the lower end of the meter.
    Property<float> labelInset{this, 0.0f};
    Property<ChannelLayout> layout{this, kMonoLayout};
    /// A bar ends at level 0; a peak beyond shows as a block from there on.
    Property<bool> limitAtOffset{this, true};
    /// A level grows from the lower end, a reduction from level 0.
    Property<LevelInterpretation> interpretation{this, LevelInterpretation::Level};
    Property<int> barAlpha{this, 255};
    /// In which bars grow, logical units; a peak line is as thick.
    Property<float> step{this, 1.0f};
    /// Of the fast source of a bar that has a slow one as well.
    Property<int> slowAlpha{this, 100};
    /// What lies above level 0 stands one step apart.
    Property<bool> splitAtOffset{this, false};

    LevelMeterStyle& style() const { return *style_; }
    /// Null for none.
    void setSources(int bar, wave::LevelSource* fast, wave::LevelSource* slow = nullptr);
    wave::LevelSource* fastSource(int bar) const { return fast_[at(bar)].source; }
    wave::LevelSource* slowSource(int bar) const { return slow_[at(bar)].source; }
    /// By rising level.
    void setColorStops(const std::vector<float>& levels);
    int barCount() const;
    /// The colours or the scale have changed.
    void rebuild();
    /// Where a position lies within the colours: 0 at their upper end, 1 at the lower.
    float fractionOf(float position) const;
    /// Lets all peaks go.
    void resetPeaks();

    /// Finds the levels at the ends of the bars.
    virtual void updateRange();
    /// Channels of one group stand close together.
    virtual int channelGroup(int channel) const;
    /// Across the meter; 1 unit lies between bars.
    virtual int barPosition(int bar) const;
    /// Which channel a bar shows.
    virtual int channelOrder(int bar) const { return bar; }
    struct LevelRange {
        float low;
        float high;
    };
    /// Within which a peak has a line.
    virtual LevelRange peakRange() const { return {holdLow_, holdHigh_}; }

    void animate() override;
    void click() override;
    void resized() override;
    void refreshTree() override;
    void propertyChanged(AbstractProperty& property) override;
    void paint(gui::Canvas& canvas) override;

protected:
    bool isVertical() const { return orientation == Orientation::Vertical; }
    /// Along the bars, and across them.
    float length() const { return isVertical() ? localBounds().height() : localBounds().width(); }
    float breadth() const { return isVertical() ? localBounds().width() : localBounds().height(); }

private:
    struct Readings {
        wave::LevelSource* source = nullptr;
        float level = -180.0f;
        float peak = -180.0f;
    };
    /// A stretch along the bars.
    struct Span {
        float start;
        float end;
    };

    static std::size_t at(int bar) { return static_cast<std::size_t>(bar); }
    bool read(Readings& readings) const;
    void forgetReadings();
    bool growsToStart() const;
    float barRoot() const;
    float quantised(float level) const;
    gui::Rect areaOf(int bar, Span span) const;

    void buildImages();
    void buildImage(std::unique_ptr<gui::Bitmap>& image, const gui::Gradient& gradient,
                    const gui::Bitmap& part) const;
    std::unique_ptr<gui::Bitmap> tileOf(const gui::Bitmap& part, float tileLength) const;
    void paintSeparators(gui::Bitmap& image) const;
    void paintSource(gui::Canvas& canvas, int bar, const Readings& readings, const gui::Bitmap& image,
                     int opacity) const;
    void paintPeak(gui::Canvas& canvas, int bar, float level, const gui::Bitmap& image, int opacity) const;
    void paintLetters(gui::Canvas& canvas) const;

    LevelMeterStyle* style_;
    std::array<Readings, kMostBars> fast_;
    std::array<Readings, kMostBars> slow_;
    std::vector<ColorStop> stops_;
    float holdLow_ = -180.0f;
    float holdHigh_ = 180.0f;
    bool cached_ = false;  ///< the images are up to date
    std::unique_ptr<gui::Bitmap> back_;
    std::unique_ptr<gui::Bitmap> bar_;
    std::unique_ptr<gui::Bitmap> slowBar_;  ///< empty: `bar_`
};

}  // namespace vanta::interface
