#include "interface/display/level_time_display.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "gui/animation/value_animation.hpp"
#include "gui/tree/user_interface.hpp"
#include "interface/display/compression.hpp"
#include "interface/meters/level_text.hpp"

namespace vanta::interface {
namespace {

/// Columns on which a curve depends beyond its own, at most.
constexpr float kCurveReach = 4.0f;
/// More than any screen has.
constexpr int kMostColumns = 1 << 20;
constexpr int kAppearMs = 1000;
constexpr int kDisappearMs = 300;
constexpr float kSqueezeMs = 500.0f;
constexpr float kLabelPoints = 7.5f;
constexpr gui::Color kLabelColor{230, 233, 240, 255};

}  // namespace

LevelTimeDisplay::LevelTimeDisplay(gui::UserInterface& interface, gui::Animator* animatedBy)
    : LevelDisplay(interface, animatedBy),
      incomingLine_(interface.createBitmap()),
      peakLabel_(interface.createBitmap()),
      frameTimer_(interface.createClock()),
      strips_(interface) {
    for (auto& text : labelTexts_) {
        text = interface.createText();
        text->fontSize = kLabelPoints;
        text->color = kLabelColor;
    }
}

int LevelTimeDisplay::addAudioCurve(wave::AudioSource* source, RealTimeOperation operation, gui::Color color,
                                    gui::Color above, gui::Color below) {
    const int index = addLevelCurve(nullptr, color, above, below);
    curveAt(index).audioSource = source;
    curveAt(index).operation = operation;
    return index;
}

int LevelTimeDisplay::addLevelCurve(wave::LevelSource* source, gui::Color color, gui::Color above,
                                    gui::Color below) {
    Curve& line = *curves_.emplace_back(std::make_unique<Curve>(*this));
    line.levelSource = source;
    line.lineColor = color;
    line.aboveColor = above;
    line.belowColor = below;
    line.bottomColor = below;
    needsReset_ = true;
    return static_cast<int>(curves_.size()) - 1;
}

float LevelTimeDisplay::deviceScale() const {
    return ui().deviceBacking().scale();
}

void LevelTimeDisplay::propertyChanged(AbstractProperty& property) {
    LevelDisplay::propertyChanged(property);
    if (&property == &speed) {
        const bool isInfinite = std::abs(speed) <= std::numeric_limits<float>::epsilon();
        if (isInfinite != infinite_) needsReset_ = true;
        infinite_ = isInfinite;
    } else if (&property == &labelCurve) {
        labels_.clear();
        markDirty();
    } else if (&property == &displayAlpha || &property == &lineOffset) {
        markDirty();
    } else {
        // What is painted lies where levels lay before.
        const AbstractProperty* mapping[] = {&domain, &maximum, &minimum, &scale, &offset, &curve};
        if (std::ranges::find(mapping, &property) != std::end(mapping)) needsReset_ = true;
    }
}

void LevelTimeDisplay::resized() {
    LevelDisplay::resized();
    needsReset_ = true;
}

void LevelTimeDisplay::refreshTree() {
    LevelDisplay::refreshTree();
    needsReset_ = true;
}

void LevelTimeDisplay::curvesChanged() {
    cache_.forget();
    halved_.forget();
    restColumns_ = 0;
    markDirty();
}

void LevelTimeDisplay::fadePicture(int target) {
    if (!animator()) {
        displayAlpha = target;
        return;
    }
    using Fade = gui::ValueAnimation<int, Property<int>>;
    auto* fade = new Fade(*animator(), this, displayAlpha, target);
    fade->duration = target > displayAlpha ? kAppearMs : kDisappearMs;
}

// A frame.

void LevelTimeDisplay::animate() {
    if (!isActive() && pen_.isAtEdge(width())) return sleep();
    if (needsReset_) reset();
    clock_.tick(frameTimer_->elapsed(), rate(), std::max(width(), 1.0f));
    frameTimer_->reset();
    readAudio();
    if (const int columns = clock_.columns(); columns > 0) advance(columns);
    if (!infinite_ && pen_.isAtEdge(width()) && isFlat()) {
        pen_.rest(width());
        return;
    }
    movePen();
    if (hasMoved()) markDirty();
    if (infinite_) squeeze();
}

bool LevelTimeDisplay::isActive() const {
    return visible && displayAlpha > 0 && alpha > 0 && !localBounds().isEmpty() &&
           std::ranges::any_of(curves_, [](const auto& line) { return line->isActive(); });
}

/// What comes meanwhile is nobody's.
void LevelTimeDisplay::sleep() {
    for (const auto& line : curves_) {
        if (wave::AudioSource* source = line->audioSource) {
            source->lock();
            source->unlock();
        }
    }
    if (needsReset_) return;
    needsReset_ = true;
    markDirty();
}

void LevelTimeDisplay::reset() {
    for (const auto& line : curves_) line->reset();
    strips_.resize(width(), height(), ui().accelerated ? StripRing::kUploadedWidth : StripRing::kCopiedWidth);
    strips_.clear([this](gui::Canvas& canvas, const gui::Rect& area) {
        for (const auto& line : curves_) line->paintRest(canvas, area, 255);
    });
    frameTimer_->reset();
    pen_.reset(width());
    if (animator()) animator()->cancel(&penAlpha_);
    penAlpha_ = 255;
    labels_.clear();
    squeezeFrames_ = squeezeCount_ = restColumns_ = 0;
    infiniteSpeed_ = kUsualSpeed;
    cache_.release();
    halved_.release();
    needsReset_ = false;
    markDirty();
}

void LevelTimeDisplay::readAudio() {
    const Curve* first = nullptr;
    for (const auto& line : curves_) {
        if (!line->audioSource.value()) continue;
        line->audioSource.value()->lock();
        if (!first) first = line.get();
    }
    if (!first) return;
    const int samples = samplesPerColumn(*first);
    for (const auto& line : curves_) {
        if (line->audioSource.value()) line->collect(samples);
    }
    for (const auto& line : curves_) {
        if (line->audioSource.value()) line->audioSource.value()->unlock();
    }
}

/// Keeps the queue short: a queue that grows makes columns of more samples, and one that drains of fewer.
int LevelTimeDisplay::samplesPerColumn(const Curve& first) const {
    float samples = sampleRate / clock_.pixelRate();
    if (first.isPrimed()) {
        const auto queued = static_cast<float>(first.queued());
        const float step = clock_.step();
        if (queued <= step) {
            samples *= 1.0f / 1.1f;
        } else if (queued > 3.0f * step) {
            samples *= 1.25f;
        } else if (queued > 2.0f * step) {
            samples *= 1.1f;
        }
    }
    return std::max(static_cast<int>(samples), 1);
}

void LevelTimeDisplay::advance(int columns) {
    const Curve::Advance step{columns, static_cast<int>(clock_.step()), infinite_, squeezeFrames_ != 0};
    for (const auto& line : curves_) line->advance(step);
    restColumns_ = isFlat() ? std::min(restColumns_ + columns, kMostColumns) : 0;
    // Where all that shows is rest, more of it looks the same.
    const bool showsRest = static_cast<float>(restColumns_ - columns) > width() + kCurveReach;
    if (!infinite_ && !showsRest) writeStrips(columns);
    if (hasLabels()) advanceLabels(columns);
}

void LevelTimeDisplay::writeStrips(int columns) {
    strips_.write(columns, [this](gui::Canvas& canvas, const gui::Rect& area) {
        for (const auto& line : curves_) line->paintStrip(canvas, area, strips_.stripWidth());
    });
}

bool LevelTimeDisplay::isFlat() const {
    return std::ranges::all_of(
        curves_, [this](const auto& line) { return static_cast<float>(line->flatColumns()) >= width(); });
}

void LevelTimeDisplay::movePen() {
    const bool jumped = pen_.advance({clock_.step(), penDrift, width(), clock_.frameMs(rate())});
    if (!jumped || !animator()) return;
    penAlpha_ = 0;
    new gui::ValueAnimation<int, int>(*animator(), this, penAlpha_, 255);
}

/// Between two columns the picture moves only by whole device pixels.
bool LevelTimeDisplay::hasMoved() const {
    const float position = clock_.position();
    if (position >= 1.0f || position == 0.0f) return true;
    const auto pixel = [this](float at) { return std::trunc(at * deviceScale() + 0.001f); };
    return pixel(position) != pixel(position - clock_.step());
}

float LevelTimeDisplay::penPosition() const {
    const float s = deviceScale();
    const float x = static_cast<float>(gui::toDevice(pen_.position(), s)) / s;
    const float position = clock_.position();
    if (infinite_ || position >= 0.999f) return x;
    return x + 1.0f - std::trunc(position * s + 0.001f) / s;
}

// Infinite.

const LevelTimeDisplay::Curve* LevelTimeDisplay::leadingCurve() const {
    const auto leading = std::ranges::find_if(curves_, [](const auto& line) { return line->isEnabled(); });
    return leading == curves_.end() ? nullptr : leading->get();
}

int LevelTimeDisplay::infiniteColumns() const {
    const Curve* leading = leadingCurve();
    return leading ? std::max(static_cast<int>(leading->table().size()) - kTableLead, 0) : 0;
}

float LevelTimeDisplay::squeezeFactor() const {
    if (squeezeFrames_ == 0) return 1.0f;
    return 1.0f -
           ease_.valueAt(static_cast<float>(squeezeCount_) / static_cast<float>(squeezeFrames_)) * 0.5f;
}

void LevelTimeDisplay::squeeze() {
    if (squeezeFrames_ == 0) {
        if (static_cast<float>(infiniteColumns()) <= width()) return;
        for (const auto& line : curves_) line->beginHalving();
        squeezeCount_ = 0;
        squeezeFrames_ = std::max(static_cast<int>(kSqueezeMs / clock_.frameMs(rate())), 1);
        return;
    }
    ++squeezeCount_;
    for (const auto& line : curves_) line->squeeze(squeezeFactor());
    markDirty();
    if (squeezeCount_ < squeezeFrames_) return;
    squeezeFrames_ = 0;
    std::swap(cache_, halved_);
    halved_.forget();
    if (hasLabels()) labels_.halve(labelPicture());
    infiniteSpeed_ *= 0.5f;
}

// Labels.

bool LevelTimeDisplay::hasLabels() const {
    return labelCurve >= 0 && labelCurve < static_cast<int>(curves_.size());
}

PeakLabelRing::Picture LevelTimeDisplay::labelPicture() const {
    const Curve& line = *curves_[static_cast<std::size_t>(labelCurve.value())];
    return {line.operation, static_cast<int>(peakLabel_->logicalRect().width()), static_cast<int>(width()),
            infinite_, static_cast<int>(line.fullTable(squeezeFrames_ != 0).size())};
}

void LevelTimeDisplay::advanceLabels(int columns) {
    const Curve::Peak peak = curveAt(labelCurve).takePeak();
    labels_.advance(columns, peak.level, peak.age, labelPicture());
}

void LevelTimeDisplay::labelPublished(PeakLabel& label) {
    LevelFormat format;
    if (curveAt(labelCurve).operation == RealTimeOperation::Minimum)
        format.interpretation = LevelInterpretation::Reduction;
    labelTexts_[static_cast<std::size_t>(label.index)]->text = formatLevel(label.level, format).text + " dB";
    fade(label, 255);
}

void LevelTimeDisplay::labelLeaves(PeakLabel& label) {
    fade(label, 0);
}

void LevelTimeDisplay::fade(PeakLabel& label, int target) {
    if (animator()) {
        new gui::ValueAnimation<int, int>(*animator(), this, label.alpha, target);
    } else {
        label.alpha = target;
    }
}

}  // namespace vanta::interface
