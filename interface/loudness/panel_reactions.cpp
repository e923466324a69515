// What a meter panel does when a parameter changes, or the user wants one to.

#include <algorithm>

#include "gui/animation/value_animation.hpp"
#include "interface/loudness/meter_colors.hpp"
#include "interface/loudness/vanta_meter_panel.hpp"

namespace vanta::interface {
namespace {

/// Between 0 dB and the lower end of the scale.
constexpr float kCompactLength = 549.0f;
constexpr float kOutsideScale = 101.0f;
/// A K-scale that lies: so that its 46 dB end with the meter.
constexpr float kCompactKScale = 12.0f;
constexpr int kSlowAlphaOfK = 100;
constexpr int kSlowAlpha = 140;
constexpr gui::Color kTruePeakColor{117, 198, 17, 255};
constexpr gui::Color kSamplePeakColor{255, 255, 255, 128};
/// Around the target, free of other lines and numbers.
constexpr float kUprightClearance = 4.0f;
constexpr float kLyingClearance = 15.0f;
constexpr int kIntegrated = 2;

}  // namespace

void VantaMeterPanel::parameterChanged(int index) {
    const VantaParameters& p = parameters();
    const bool all = index == kAllParameters;
    const auto is = [&](const AbstractPluginParameter& parameter) {
        return all || index == parameter.index();
    };
    const bool isTime = is(p.loudnessTimeScale);
    if (is(p.meterScale)) takePlace(!all);
    if (isTime || is(p.integratedPeakTimeScale)) applySources();
    if (isTime || is(p.meterScale) || is(p.unityGain) || is(p.loudnessMeterScale) ||
        is(p.loudnessMeterOrigin) || is(p.loudnessMeterTarget)) {
        layOut();
        applyScale();
    }
    if (is(p.bypass)) applyBypass(!all);
    if (is(p.outputLevel) || is(p.truePeakMetering)) applyOutputColors();
    showing_ = true;
    loudnessTimeButton_->value = p.loudnessTimeScale.currentIndex();
    timeScaleButton_->value = p.integratedPeakTimeScale.currentIndex();
    pauseButton_->value = p.loudnessRecording.currentIndex();
    showing_ = false;
    refreshMenus();
}

void VantaMeterPanel::applyScale() {
    const LoudnessScale loudness = LoudnessScale::of(parameters());
    MainScale main = MainScale::of(meterScale(), loudness,
                                   isCompact() ? kCompactLength : localBounds().height() - kOutsideScale);
    if (isCompact() && isKScale(meterScale())) main.scale = kCompactKScale;
    for (const Meter which : {Output, Reduction}) main.applyTo(*meters_[which]);
    if (mainDisplay_) main.applyTo(*mainDisplay_);
    for (DisplayGrid* grid : mainGrids_) main.applyTo(*grid);
    if (gridControl_) main.applyTo(gridControl_->grid());
    meters_[Output]->slowAlpha = isKScale(meterScale()) ? kSlowAlphaOfK : kSlowAlpha;
    applyLoudnessScale(loudness);
    applyColors(loudness);
    refreshMenus();
}

void VantaMeterPanel::applyLoudnessScale(const LoudnessScale& loudness) {
    LoudnessMeterDisplay& meter = *loudnessMeter_;
    const gui::Rect& all = meter.localBounds();
    const float start = isCompact() ? 2.0f : 0.0f;
    const float length = isCompact() ? all.width() - 1.0f : all.height() - 2.0f;
    const float scale = std::max(length - start, 0.0f) / (3.0f * loudness.reach);
    meter.scale = scale;
    meter.offset = isCompact() ? all.width() - start - scale * loudness.top() : scale * loudness.top() + 1.0f;
    meter.target = loudness.target;

    DisplayGrid& grid = loudnessGrid_->grid();
    grid.tickOrigin = loudness.target;
    grid.steps = &stepsOf(MeterScale::Loudness);
    grid.extras = std::vector<float>{loudness.top(), loudness.target, loudness.bottom()};
    grid.format = loudness.numberFormat();
    grid.numberShift = loudness.numberShift();
    grid.exemptLevel = loudness.target;
    const float target = grid.positionOf(loudness.target);
    std::vector<gui::Rect> areas;
    if (isCompact()) {
        areas.push_back(
            {target - kLyingClearance, 0.0f, target + kLyingClearance, loudnessGrid_->localBounds().bottom});
    } else {
        const gui::Point origin = loudnessGrid_->bounds.value().origin();
        areas.push_back({0.0f, target - kUprightClearance, loudnessGrid_->localBounds().right,
                         target + kUprightClearance});
        // What stands on the scale's lower end.
        areas.push_back({8.0f, targetButton_->bounds.value().top - origin.y - 2.0f,
                         loudnessGrid_->localBounds().right, loudnessGrid_->localBounds().bottom});
        areas.push_back({8.0f, 0.0f, loudnessGrid_->localBounds().right,
                         scaleButton_->bounds.value().bottom - origin.y + 2.0f});
    }
    grid.exclusions = areas;

    integratedLabel_->levelShift = loudness.numberShift();
    integratedLabel_->clipLevel = loudness.isRelative ? 0.0f : loudness.target;
    peakLabels_[Loudness]->levelShift = loudness.numberShift();
    unitLabel_->setText(loudness.unit());
}

void VantaMeterPanel::applyColors(const LoudnessScale& loudness) {
    const BarColors colors = barColors(parameters().unityGain.currentIndex() != 0);
    const BarColors reduction = reductionColors();
    styles_[Reduction]->setGradient(gui::Gradient(reduction.top, reduction.bottom));
    const auto setBands = [&](Meter which, const BandLimits& limits) {
        meters_[which]->setColorStops({limits[2], limits[1], limits[0]});
        styles_[which]->setGradient(bandGradient(*meters_[which], limits, colors));
    };
    if (isKScale(meterScale())) {
        setBands(Output, bandsOfReference(referenceOf(meterScale())));
    } else {
        meters_[Output]->setColorStops({});
        styles_[Output]->setGradient(gui::Gradient(colors.top, colors.bottom));
    }
    setBands(Loudness, bandsOfTarget(loudness.target, loudness.reach));
    loudnessDisplay_->linkGradient = styles_[Loudness]->barGradient;
    for (LevelMeterDisplay* meter : meters_) meter->rebuild();
}

void VantaMeterPanel::applySources() {
    const int chosen = parameters().loudnessTimeScale.currentIndex();
    loudnessMeter_->chosen = chosen;
    wave::LevelSource* source = link_.level(chosen);
    loudnessDisplay_->source = source;
    integratedLabel_->setSource(source);
    const int peak = chosen == kIntegrated ? parameters().integratedPeakTimeScale.currentIndex() : chosen;
    peakLabels_[Loudness]->setSource(link_.level(peak));
    placeLetters();
}

void VantaMeterPanel::applyOutputColors() {
    const bool isTruePeak = parameters().truePeakMetering.currentIndex() != 0;
    LevelPeakLabel& label = *peakLabels_[Output];
    label.targetLevel = isTruePeak ? parameters().outputLevel.value() : 0.0f;
    label.normalColor = isTruePeak ? kTruePeakColor : kSamplePeakColor;
}

void VantaMeterPanel::applyBypass(bool animated) {
    const int target = parameters().bypass.currentIndex() != 0 ? 0 : 255;
    const auto fade = [&](gui::AnimatedControl* owner, Property<int>& cell) {
        if (animated && animator()) {
            new gui::ValueAnimation<int, Property<int>>(*animator(), owner, cell, target);
        } else {
            cell = target;
        }
    };
    for (LevelMeterDisplay* meter : meters_) fade(meter, meter->barAlpha);
    for (LevelPeakLabel* label : peakLabels_) fade(nullptr, label->alpha);
}

void VantaMeterPanel::refreshMenus(void*) {
    const float target = parameters().loudnessMeterTarget.value();
    const TargetPreset* preset = presetOf(target);
    for (const BoundItem& bound : items_) {
        const int id = bound.item->id;
        if (id == LoudnessMenuItem::kCustom) {
            bound.item->checked = preset == nullptr;
        } else {
            bound.item->checked = static_cast<float>(id) == bound.parameter->value();
        }
        if (bound.parameter == &parameters().loudnessMeterScale) {
            bound.item->text = scaleEntry(parameters(), id);
        }
    }
    scaleButton_->setCaption(isCompact() ? compactCaption(parameters()) : scaleCaption(parameters()));
    targetButton_->setCaption(targetCaption(parameters()));
}

void VantaMeterPanel::chooseFrom(const gui::ValueControl& control, const AbstractPluginParameter& parameter) {
    const auto value = static_cast<float>(control.value.value());
    if (!showing_ && value != parameter.value()) link_.choose(parameter, value);
}

void VantaMeterPanel::loudnessTimeChosen(void*) {
    chooseFrom(*loudnessTimeButton_, parameters().loudnessTimeScale);
}

void VantaMeterPanel::timeScaleChosen(void*) {
    chooseFrom(*timeScaleButton_, parameters().integratedPeakTimeScale);
}

void VantaMeterPanel::pauseChosen(void*) {
    chooseFrom(*pauseButton_, parameters().loudnessRecording);
}

void VantaMeterPanel::resetClicked(void*) {
    if (auto* integrated = link_.level(static_cast<int>(ProgrammeLevel::Integrated))) {
        integrated->resetMeasurement();
    }
    for (const ChannelLevel level : {ChannelLevel::OutputPeak, ChannelLevel::Gain}) {
        if (auto* combined = link_.combinedLevel(level)) combined->resetPeak();
    }
    using DisplayMode = VantaParameters::DisplayMode;
    if (parameters().displayMode.currentIndex() == static_cast<int>(DisplayMode::Infinite)) {
        link_.restartPicture();
    }
}

}  // namespace vanta::interface
