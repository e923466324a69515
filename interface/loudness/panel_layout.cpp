// Where the parts of a meter panel lie.

#include <algorithm>

#include "interface/loudness/vanta_meter_panel.hpp"

namespace vanta::interface {
namespace {

using gui::Rect;

/// Full scale of the regular form, and what lies below its scale.
constexpr float kZero = 57.0f;
constexpr float kBelowMeters = 44.0f;
/// Above full scale, for overs.
constexpr float kOverRoom = 2.0f;
constexpr float kLabelTop = 39.0f;
constexpr float kLetterInset = 2.0f;
constexpr Rect kLabelSize{0.0f, 0.0f, 32.0f, 16.0f};

// The loudness part of the regular form, from its left.
constexpr float kLoudnessLeft = 33.0f;
constexpr float kBelowLoudness = 93.0f;
constexpr float kBesideLoudness = kLoudnessLeft + LoudnessMeterDisplay::kBreadth;
constexpr float kBracketLeft = kLoudnessLeft + 75.0f;
/// Lines begin at the numbers' left and have numbers in a column behind.
constexpr Rect kGridMargins{2.0f, 0.0f, 28.0f, 0.0f};
constexpr float kGridWidth = 34.0f;
constexpr float kScaleButtonTop = 46.0f;
constexpr float kButtonHeight = 20.0f;

// The compact form. A scale that lies has room for half a number beyond its ends.
constexpr float kLyingLeft = 53.0f;
constexpr float kLyingRight = 602.0f;
constexpr float kLyingSpare = 20.0f;
constexpr float kRightColumn = 606.0f;

void setLying(DisplayGridControl& control, float top, float height, const Rect& margins, float labelInset) {
    control.setBounds(
        Rect::ofSize(kLyingLeft - kLyingSpare, top, kLyingRight - kLyingLeft + 2.0f * kLyingSpare, height));
    DisplayGrid& grid = control.grid();
    grid.positionShift = kLyingSpare;
    grid.margins = margins;
    grid.labelInset = labelInset;
    grid.fontSize = 6.75f;
}

}  // namespace

void VantaMeterPanel::layOut() {
    if (isCompact()) {
        layOutCompact();
    } else {
        layOutRegular();
    }
    placeLetters();
    showControls();
}

void VantaMeterPanel::layOutRegular() {
    const float w = meterWidth();
    const float right = localBounds().right, bottom = localBounds().bottom;
    for (const Meter which : {Output, Reduction}) {
        const float left = right - w * (which == Output ? 2.0f : 1.0f);
        meters_[which]->setBounds(
            {left, kZero - kOverRoom, left + w, std::max(bottom - kBelowMeters, kZero)});
        meters_[which]->offset = kOverRoom;
        peakLabels_[which]->setBounds(Rect::ofSize(left, kLabelTop, w, kLabelSize.bottom));
        captions_[which]->setBounds(Rect::ofSize(left, bottom - kBelowMeters + 3.0f, w, 14.0f));
        meters_[which]->labelInset = kLetterInset;
    }
    keepOutputReadable();
    layOutRegularLoudness(right - 2.0f * w - kLoudnessWidth);
}

/// What covers bars leaves their letters and the caption in sight.
void VantaMeterPanel::keepOutputReadable() {
    const Rect covered = covered_.translated(gui::Point{} - bounds.value().origin());
    const Rect& meter = meters_[Output]->bounds;
    if (covered.intersected(meter).isEmpty()) return;
    meters_[Output]->labelInset = meter.bottom - covered.top + kLetterInset;
    const Rect& caption = captions_[Output]->bounds;
    captions_[Output]->setBounds(
        {std::max(caption.left, covered.right), caption.top, caption.right, caption.bottom});
}

void VantaMeterPanel::layOutRegularLoudness(float left) {
    const float bottom = localBounds().bottom - offBottom_;
    const float end = std::max(bottom - kBelowLoudness, kZero + 1.0f);
    const auto at = [&](float x, float y, float width, float height) {
        return Rect::ofSize(left + x, y, width, height);
    };
    meters_[Loudness]->setBounds(at(kLoudnessLeft, kZero, LoudnessMeterDisplay::kBreadth, end - kZero));
    loudnessGrid_->setBounds(at(kBesideLoudness, kZero, kGridWidth, end - kZero));
    DisplayGrid& grid = loudnessGrid_->grid();
    grid.margins = kGridMargins;
    grid.labelAlignment = gui::Alignment::Right;
    grid.labelInset = 6.0f;
    const float linkTop = kZero - 12.0f;
    loudnessDisplay_->setBounds({left, linkTop, left + kLoudnessWidth, bottom - 84.0f});
    // The bracket begins below the scale's menu and ends above the target's.
    loudnessDisplay_->setPlaces({1.0f, 0.0f, kLoudnessLeft - 2.0f, bottom - 84.0f - linkTop}, kBracketLeft,
                                kScaleButtonTop + kButtonHeight + 2.0f - linkTop,
                                std::max(bottom - 162.0f - linkTop, 60.0f));

    peakLabels_[Loudness]->setBounds(
        at(kLoudnessLeft, kLabelTop, LoudnessMeterDisplay::kWideBar + 4.0f, kLabelSize.bottom));
    timeScaleButton_->setBounds(at(1.0f, kLabelTop - 1.0f, kLoudnessLeft - 1.0f, 18.0f));
    scaleButton_->setBounds(at(kBesideLoudness + 7.0f, kScaleButtonTop, 104.0f, kButtonHeight));
    targetButton_->setBounds(at(kBesideLoudness + 6.0f, bottom - 159.0f, 74.0f, 20.0f));
    pauseButton_->setBounds(at(160.0f, bottom - 159.0f, 18.0f, 20.0f));
    resetButton_->setBounds(at(178.0f, bottom - 159.0f, 18.0f, 20.0f));
    const float middle = kLoudnessLeft + LoudnessMeterDisplay::kWideBar / 2.0f;
    // What stands beside the meter's lower end leaves room for the number with its unit behind.
    integratedLabel_->setBounds(at(middle - 48.0f, bottom - 84.0f, 58.0f, 26.0f));
    unitLabel_->setBounds(at(middle + 13.0f, bottom - 76.0f, 27.0f, 16.0f));
    loudnessTimeButton_->setBounds(at(middle - 39.0f, bottom - 54.0f, 78.0f, 20.0f));
}

void VantaMeterPanel::layOutCompact() {
    if (isLoudness()) return layOutCompactLoudness();
    const float length = kLyingRight - kLyingLeft;
    for (const Meter which : {Output, Reduction}) {
        const float top = which == Output ? 181.0f : 229.0f;
        meters_[which]->setBounds(Rect::ofSize(kLyingLeft, top, length + kOverRoom, 31.0f));
        meters_[which]->offset = length;
        captions_[which]->setBounds(Rect::ofSize(2.0f, top + 8.0f, 44.0f, 15.0f));
        peakLabels_[which]->setBounds(kLabelSize.translated({613.0f, which == Output ? 181.0f : 245.0f}));
    }
    setLying(*gridControl_, 213.0f, 16.0f, {kLyingSpare - 1.0f, 0.0f, kLyingSpare, 13.0f}, 1.0f);
}

/// The level meters give way to the loudness meter, with its scale between.
void VantaMeterPanel::layOutCompactLoudness() {
    const float length = kLyingRight - kLyingLeft;
    const float tops[] = {177.0f, 190.0f};
    const float heights[] = {12.0f, 10.0f};
    for (const Meter which : {Output, Reduction}) {
        meters_[which]->setBounds(Rect::ofSize(kLyingLeft, tops[which], length + kOverRoom, heights[which]));
        meters_[which]->offset = length;
        captions_[which]->setBounds(Rect::ofSize(22.0f, tops[which] - 1.0f, 25.0f, heights[which] + 2.0f));
        peakLabels_[which]->setBounds(kLabelSize.translated({613.0f, which == Output ? 176.0f : 193.0f}));
    }
    meters_[Loudness]->setBounds(Rect::ofSize(kLyingLeft, 213.0f, length, LoudnessMeterDisplay::kBreadth));
    setLying(*loudnessGrid_, 200.0f, 13.0f, {kLyingSpare, 10.0f, kLyingSpare, 0.0f}, 0.0f);
    // As wide as the scale: where the range is written, it clears the numbers at the ends as well.
    loudnessDisplay_->setBounds(
        Rect::ofSize(kLyingLeft - kLyingSpare, 198.0f, length + 2.0f * kLyingSpare, 15.0f));
    loudnessDisplay_->setPlaces({}, 13.0f, kLyingSpare, kLyingSpare + length);
    pauseButton_->setBounds(Rect::ofSize(3.0f, 174.0f, 18.0f, 18.0f));
    resetButton_->setBounds(Rect::ofSize(3.0f, 191.0f, 18.0f, 18.0f));
    scaleButton_->setBounds(Rect::ofSize(2.0f, 238.0f, 49.0f, 20.0f));
    integratedLabel_->setBounds(Rect::ofSize(kRightColumn - 2.0f, 232.0f, 50.0f, 18.0f));
    unitLabel_->setBounds(Rect::ofSize(kRightColumn - 2.0f, 248.0f, 50.0f, 12.0f));
}

/// Each letter belongs to a source, and stands on whatever bar shows that.
void VantaMeterPanel::placeLetters() {
    const Rect& meter = meters_[Loudness]->bounds.value();
    for (int bar = 0; bar < 3; ++bar) {
        gui::Image& letter = *channelPictures_[static_cast<std::size_t>(loudnessMeter_->channelOrder(bar))];
        const auto from = static_cast<float>(loudnessMeter_->barPosition(bar));
        const auto to = static_cast<float>(loudnessMeter_->barPosition(bar + 1)) - 1.0f;
        const float across = std::max((from + to) / 2.0f - 4.0f, from - 1.0f);
        if (isCompact()) {
            letter.setBounds(
                Rect::ofSize(meter.left + 4.0f, meter.top + (from + to) / 2.0f - 6.0f, 8.0f, 12.0f));
        } else {
            letter.setBounds(Rect::ofSize(meter.left + across, meter.bottom - 14.0f, 8.0f, 12.0f));
        }
    }
}

void VantaMeterPanel::showControls() {
    const bool loudness = isLoudness();
    const bool integrated = parameters().loudnessTimeScale.currentIndex() == 2;
    timeScaleButton_->visible = loudness && integrated && !isCompact();
    for (gui::Control* control :
         {static_cast<gui::Control*>(targetButton_), static_cast<gui::Control*>(loudnessTimeButton_),
          static_cast<gui::Control*>(peakLabels_[Loudness])}) {
        control->visible = loudness && !isCompact();
    }
    for (gui::Control* control :
         {static_cast<gui::Control*>(scaleButton_), static_cast<gui::Control*>(pauseButton_),
          static_cast<gui::Control*>(resetButton_), static_cast<gui::Control*>(loudnessGrid_),
          static_cast<gui::Control*>(loudnessDisplay_), static_cast<gui::Control*>(integratedLabel_),
          static_cast<gui::Control*>(unitLabel_), static_cast<gui::Control*>(meters_[Loudness]),
          static_cast<gui::Control*>(channelPictures_[0]), static_cast<gui::Control*>(channelPictures_[1]),
          static_cast<gui::Control*>(channelPictures_[2])}) {
        control->visible = loudness;
    }
    if (gridControl_) gridControl_->visible = !loudness;
}

}  // namespace vanta::interface
