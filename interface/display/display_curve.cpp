#include "interface/display/display_curve.hpp"

#include <algorithm>
#include <cmath>

#include "foundation/numbers.hpp"
#include "gui/graphics/curve_shapes.hpp"
#include "interface/display/compression.hpp"
#include "interface/display/level_time_display.hpp"

namespace vanta::interface {
namespace {

/// Values before the new ones that a line needs to join them.
constexpr std::size_t kContext = 4;

}  // namespace

DisplayCurve::DisplayCurve(LevelTimeDisplay& display) : display_(display) {
    queue_.restart(rule());
}

ColumnRule DisplayCurve::rule() const {
    return {operation, display_.domain == LevelDisplay::LevelDomain::Decibel, release, restLevel};
}

void DisplayCurve::propertyChanged(AbstractProperty& property) {
    display_.curvesChanged();
    if (&property == &belowColor || &property == &aboveColor || &property == &lineColor ||
        &property == &lineGradient) {
        enabled_ = belowColor.value().alpha != 0 || aboveColor.value().alpha != 0 ||
                   lineColor.value().alpha != 0 || !lineGradient.value().isEmpty();
    } else if (&property == &restLevel) {
        queue_.restart(rule());
        peak_ = restLevel;
        peakAge_ = 0;
        display_.restart();
    } else if (&property == &operation || &property == &release) {
        queue_.setRule(rule());
    }
}

float DisplayCurve::levelOf(float linear) const {
    return display_.domain == LevelDisplay::LevelDomain::Decibel ? static_cast<float>(dbFromGain(linear))
                                                                 : linear;
}

float DisplayCurve::positionOf(float linear) const {
    return display_.levelToPosition(levelOf(linear));
}

FlatRun::Limits DisplayCurve::flatLimits() const {
    return {-lineWidth, display_.localBounds().height() + lineWidth};
}

void DisplayCurve::reset() {
    primed_ = false;
    queue_.restart(rule());
    table_.clear();
    snapshot_.clear();
    flat_.reset(restPosition(), flatLimits());
    peak_ = restLevel;
    peakAge_ = 0;
}

void DisplayCurve::collect(int samplesPerColumn) {
    queue_.collect(*audioSource.value(), samplesPerColumn);
}

void DisplayCurve::advance(const Advance& advance) {
    painted_ -= advance.columns;
    if (!enabled_) {
        primed_ = false;
        queue_.restart(rule());
        flat_.reset(restPosition(), flatLimits());
        return;
    }
    const bool hadBegun = primed_;
    const std::size_t start = makeRoom(advance);
    const std::span<float> out = std::span(table_).subspan(start);
    if (isSlow()) {
        fillSlow(out);
    } else {
        fillFast(out, advance.wholeStep);
    }
    if (!hadBegun) std::fill_n(table_.begin(), start, out.front());
    if (advance.halving) snapshot_ = table_;
    flat_.extend(out, flatLimits());
}

/// The index of the first new value.
std::size_t DisplayCurve::makeRoom(const Advance& advance) {
    std::size_t start = kContext;
    if (advance.infinite) {
        if (advance.halving) table_ = snapshot_;
        start = primed_ ? std::max<std::size_t>(table_.size(), kTableLead) : kTableLead;
    } else if (primed_ && table_.size() > kContext) {
        std::copy(table_.end() - kContext, table_.end(), table_.begin());
    }
    table_.resize(start + static_cast<std::size_t>(advance.columns));
    return start;
}

void DisplayCurve::fillFast(std::span<float> out, int wholeStep) {
    const auto columns = static_cast<int>(out.size());
    // The queue first fills to the depth at which it works.
    if (!primed_ && columns + wholeStep < queue_.size()) primed_ = true;
    queue_.cutTo(columns + 2 * wholeStep + queue_.jitter());
    for (float& position : out) {
        float level = restLevel;
        if (primed_) queue_.take(level);
        notePeak(level);
        position = positionOf(level);
    }
}

/// One frame behind, so that a smooth line can join the values.
void DisplayCurve::fillSlow(std::span<float> out) {
    const float position = display_.levelToPosition(levelSource.value()->value(wave::LevelSource::Current));
    if (!primed_) {
        recent_.fill(position);
        primed_ = true;
    } else {
        std::rotate(recent_.begin(), recent_.begin() + 1, recent_.end());
        recent_.back() = position;
    }
    const auto n = static_cast<float>(out.size());
    const gui::Cubic cubic(std::array<gui::Point, 4>{
        {{-n, recent_[0]}, {0.0f, recent_[1]}, {n, recent_[2]}, {2.0f * n, recent_[3]}}});
    for (std::size_t i = 0; i < out.size(); ++i) out[i] = cubic.valueAt(static_cast<float>(i));
}

/// A peak's age counts from the column after it.
void DisplayCurve::notePeak(float level) {
    if (isBeyond(operation, level, peak_)) {
        peak_ = level;
        peakAge_ = -1;
    } else {
        ++peakAge_;
    }
}

DisplayCurve::Peak DisplayCurve::takePeak() {
    const Peak taken{levelOf(peak_), peakAge_};
    peak_ = restLevel;
    peakAge_ = 0;
    return taken;
}

void DisplayCurve::squeeze(float factor) {
    if (enabled_) compress(snapshot_, factor, table_);
}

void DisplayCurve::halve(bool halving) {
    if (enabled_) compress(fullTable(halving), 0.5f, halved_);
}

void DisplayCurve::compress(std::span<const float> table, float factor, std::vector<float>& out) const {
    const float columns = static_cast<float>(table.size()) - static_cast<float>(kTableLead);
    if (columns > 0.0f) {
        compressTable(table, static_cast<int>(columns * factor) + kTableLead, operation, out);
    }
}

}  // namespace vanta::interface
