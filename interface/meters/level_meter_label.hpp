#pragma once

#include <memory>

#include "foundation/interval_timer.hpp"
#include "gui/animation/animator.hpp"
#include "gui/controls/label.hpp"
#include "gui/graphics/gradient.hpp"
#include "interface/meters/level_text.hpp"
#include "wave/level_source.hpp"

namespace vanta::interface {

/// A level as a number, read with every frame. Its text changes at most about six times a second, so that it
/// can be read; its colour at once.
class LevelMeterLabel : public gui::Label, public gui::AnimatedObject {
public:
    /// Between two texts, in milliseconds.
    static constexpr int kPaceMs = 150;

    explicit LevelMeterLabel(gui::UserInterface& interface, gui::Animator* animatedBy = nullptr);
    ~LevelMeterLabel() override;

    Property<gui::Color> clipColor{this, gui::Color::of(0xFF0000FF)};
    /// Above it a number has the clip colour.
    Property<float> clipLevel{this, 0.0f};
    /// dB below the clip level; above 0 the colour goes from normal over warning to clip within it.
    Property<float> fadeRange{this, 0.0f};
    Property<gui::Color> warningColor{this, gui::Color::of(0xFF00BAFF)};
    Property<wave::LevelSource::Info> info{this, wave::LevelSource::Current};
    Property<LevelInterpretation> interpretation{this, LevelInterpretation::Level};
    /// Added to all levels but silence.
    Property<float> levelShift{this, 0.0f};
    Property<gui::Color> normalColor{this, gui::Color{255, 255, 255, 255}};
    /// Decimals.
    Property<int> precision{this, 1};
    Property<FloatPrecision> precisionMode{this, FloatPrecision::Most};
    /// Above it a number has the target colour; 0 for none.
    Property<float> targetLevel{this, 0.0f};
    Property<gui::Color> targetColor{this, gui::Color::of(0xFF00BAFF)};

    /// Null shows nothing.
    void setSource(wave::LevelSource* source);
    wave::LevelSource* source() const { return source_; }
    const std::string& shownText() const { return shown_; }

    void animate() override;
    void deleteSelf() override {}
    void propertyChanged(AbstractProperty& property) override;
    void linkRemoved(Component* other) override;

private:
    LevelText read();
    gui::Color colorOf(const LevelText& number) const;
    void show(const LevelText& number, gui::Color color);
    void refresh();

    gui::Animator* animator_;
    wave::LevelSource* source_ = nullptr;
    gui::Gradient gradient_;
    std::unique_ptr<IntervalTimer> timer_;  ///< since the last text
    std::string shown_;
};

/// The highest level since somebody has clicked on it.
class LevelPeakLabel : public LevelMeterLabel {
public:
    explicit LevelPeakLabel(gui::UserInterface& interface, gui::Animator* animatedBy = nullptr);

    /// Behind the number, grown to the size of the label; null for none. Outlives the label.
    void setBackground(const gui::Bitmap* picture);

    int alphaAt(gui::Point) override { return 255; }
    void click() override;
    void paint(gui::Canvas& canvas) override;

private:
    const gui::Bitmap* background_ = nullptr;
};

}  // namespace vanta::interface
