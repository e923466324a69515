#include "interface/meters/level_meter_display.hpp"

#include <algorithm>
#include <cmath>

#include "gui/tree/user_interface.hpp"
#include "interface/meters/level_reading.hpp"

namespace vanta::interface {
namespace {

constexpr float kSlack = 0.001f;

}  // namespace

LevelMeterDisplay::LevelMeterDisplay(gui::UserInterface& interface, gui::Animator* animatedBy,
                                     LevelMeterStyle* sharedStyle)
    : LevelDisplay(interface, animatedBy),
      style_(sharedStyle ? sharedStyle : &interface.make<LevelMeterStyle>()),
      back_(interface.createBitmap()),
      bar_(interface.createBitmap()),
      slowBar_(interface.createBitmap()) {
    // Two quick clicks are two clicks.
    doubleClickable = false;
}

int LevelMeterDisplay::barCount() const {
    if (layout != kBySources) return channelCount(layout);
    int count = 0;
    for (int bar = 0; bar < kMostBars; ++bar) {
        if (fast_[at(bar)].source || slow_[at(bar)].source) count = bar + 1;
    }
    return count;
}

void LevelMeterDisplay::setSources(int bar, wave::LevelSource* fast, wave::LevelSource* slow) {
    fast_[at(bar)].source = fast;
    slow_[at(bar)].source = slow;
    markDirty();
}

void LevelMeterDisplay::forgetReadings() {
    const float rest = interpretation == LevelInterpretation::Level ? kSilence : 0.0f;
    for (auto* bars : {&fast_, &slow_}) {
        for (Readings& readings : *bars) readings.level = readings.peak = rest;
    }
}

void LevelMeterDisplay::resetPeaks() {
    for (auto* bars : {&fast_, &slow_}) {
        for (const Readings& readings : *bars) {
            if (readings.source) readings.source->resetPeak();
        }
    }
}

void LevelMeterDisplay::click() {
    resetPeaks();
    LevelDisplay::click();
}

int LevelMeterDisplay::channelGroup(int channel) const {
    if (layout == kBySources) return 0;
    const int type = channelTypes(layout)[static_cast<std::size_t>(channel)];
    const bool isPaired = type & (kLeftChannel | kRightChannel);
    return isPaired ? type & ~(kLeftChannel | kRightChannel) : type;
}

int LevelMeterDisplay::barPosition(int bar) const {
    const int count = std::max(barCount(), 1);
    const int room = static_cast<int>(breadth());
    return ((room - count + 1) / count + 1) * bar;
}

/// Whole steps from level 0 within the meter: a line at a level beyond them would be cut.
void LevelMeterDisplay::updateRange() {
    for (ColorStop& stop : stops_) stop.position = levelToPosition(stop.level);
    // A meter that is too small for its scale has no levels at its ends.
    holdLow_ = kSilence;
    holdHigh_ = -kSilence;
    if (domain == LevelDomain::Decibel && !(scale > 0.0f)) return;
    const float zero = offset;
    const float before = zero - std::floor(zero / step + kSlack) * step;
    const float after = zero + std::floor((length() - zero) / step + kSlack) * step;
    const float a = positionToLevel(before);
    const float b = positionToLevel(after);
    holdLow_ = std::min(a, b);
    holdHigh_ = std::max(a, b);
}

void LevelMeterDisplay::setColorStops(const std::vector<float>& levels) {
    stops_.clear();
    for (const float level : levels) stops_.push_back({levelToPosition(level), level});
}

void LevelMeterDisplay::rebuild() {
    cached_ = false;
    updateRange();
    markDirty();
}

void LevelMeterDisplay::resized() {
    LevelDisplay::resized();
    rebuild();
}

void LevelMeterDisplay::refreshTree() {
    LevelDisplay::refreshTree();
    cached_ = false;
}

void LevelMeterDisplay::propertyChanged(AbstractProperty& property) {
    LevelDisplay::propertyChanged(property);
    const AbstractProperty* looks[] = {&labelInset, &limitAtOffset, &barAlpha, &slowAlpha, &splitAtOffset};
    const AbstractProperty* shapes[] = {&layout, &interpretation, &step, &scale,
                                        &offset, &orientation,    &curve};
    if (&property == &interpretation) forgetReadings();
    if (std::ranges::find(looks, &property) != std::end(looks)) markDirty();
    if (std::ranges::find(shapes, &property) != std::end(shapes)) rebuild();
}

/// True if they have moved.
bool LevelMeterDisplay::read(Readings& readings) const {
    if (!readings.source) return false;
    float level = readings.source->value(wave::LevelSource::Current);
    float peak = readings.source->value(wave::LevelSource::Highest);
    // Before a processor has run, a reading is silence: no reduction yet.
    if (interpretation == LevelInterpretation::Reduction) {
        if (isSilence(level)) level = 0.0f;
        if (isSilence(peak)) peak = 0.0f;
    }
    const bool moved = !isSameReading(level, readings.level) || !isSameReading(peak, readings.peak);
    readings.level = level;
    readings.peak = peak;
    return moved;
}

void LevelMeterDisplay::animate() {
    if (!isShown()) return;
    bool moved = false;
    for (auto* bars : {&fast_, &slow_}) {
        for (Readings& readings : *bars) moved |= read(readings);
    }
    if (moved) markDirty();
}

/// A level rises to the top and a reduction comes from the right: towards smaller coordinates.
bool LevelMeterDisplay::growsToStart() const {
    return (interpretation == LevelInterpretation::Level) == isVertical();
}

/// Where bars grow from.
float LevelMeterDisplay::barRoot() const {
    if (interpretation == LevelInterpretation::Reduction) return std::clamp(offset.value(), 0.0f, length());
    return isVertical() ? length() : 0.0f;
}

float LevelMeterDisplay::fractionOf(float position) const {
    const float zero = limitAtOffset ? std::clamp(offset.value(), 0.0f, length()) : 0.0f;
    const float along = isVertical() ? position : length() - position;
    const float start = isVertical() || !limitAtOffset ? zero : length() - zero;
    return (along - start) / std::max(length() - start, 1.0f);
}

float LevelMeterDisplay::quantised(float level) const {
    const float position = levelToPosition(level);
    const float scaleOfDevice = ui().deviceBacking().scale();
    if (growsToStart()) {
        return static_cast<float>(gui::toDevice(position, scaleOfDevice)) / scaleOfDevice;
    }
    const float stepped = std::floor(position / step + kSlack) * step;
    const auto stop = std::ranges::find_if(
        stops_, [&](const ColorStop& candidate) { return level <= candidate.level + kSlack; });
    return stop == stops_.end() ? stepped : std::min(stepped, stop->position);
}

}  // namespace vanta::interface
