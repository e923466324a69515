// What a level display looks like.

#include <algorithm>
#include <cmath>

#include "interface/display/compression.hpp"
#include "interface/display/level_time_display.hpp"

namespace vanta::interface {
namespace {

/// Columns to the right that a line's shape depends on.
constexpr float kLookAhead = 4.0f;
/// The tip of a label, above the field of its number.
constexpr float kLabelTip = 3.0f;
/// How far a label's picture lies below its level.
constexpr float kLabelGap = 8.0f;

}  // namespace

void LevelTimeDisplay::paint(gui::Canvas& canvas) {
    if (infinite_) {
        paintInfinite(canvas);
    } else if (!needsReset_) {
        paintScrolling(canvas);
    }
    grid_.paint(canvas);
    const Curve* leading = leadingCurve();
    paintPen(canvas, infinite_ && leading ? static_cast<float>(infiniteColumns()) : penPosition());
    paintLabels(canvas);
}

void LevelTimeDisplay::paintScrolling(gui::Canvas& canvas) {
    const float x = penPosition();
    strips_.paint(canvas, x, displayAlpha);
    if (penAlpha_ >= 255) return;
    const gui::Rect right{x, 0.0f, width(), height()};
    const int opacity = gui::multiplyBytes(255 - penAlpha_, displayAlpha);
    for (const auto& line : curves_) line->paintRest(canvas, right, opacity);
}

/// Columns of all curves that no later column changes.
float LevelTimeDisplay::settledColumns() const {
    auto columns = static_cast<std::size_t>(2.0f * width());
    for (const auto& line : curves_) {
        if (line->isEnabled()) columns = std::min(columns, line->fullTable(isHalving()).size());
    }
    return std::max(static_cast<float>(columns) - kTableLead - kLookAhead, 0.0f);
}

/// In memory each pixel costs, and what has settled is kept; a renderer draws curves as quickly as pictures.
void LevelTimeDisplay::paintInfinite(gui::Canvas& canvas) {
    if (ui().accelerated || displayAlpha < 255) {
        cache_.forget();
        halved_.forget();
        return paintTables(canvas, displayAlpha);
    }
    extendHalved();
    // The picture that was kept moves as a whole, so that a frame costs no more than any other.
    if (isHalving()) return paintTablesFrom(canvas, cache_.paintSqueezed(ui(), canvas, squeezeFactor()));
    const float settled = settledColumns();
    cache_.extend(ui(), localBounds(), settled, [this](gui::Canvas& kept) { paintTables(kept, 255); });
    cache_.paint(canvas);
    paintTablesFrom(canvas, settled);
}

/// What the next halving leads to is painted as the columns come, so that it is there when it is needed.
void LevelTimeDisplay::extendHalved() {
    const float columns = std::trunc(settledColumns() * 0.5f) - kLookAhead;
    if (columns <= 0.0f) return;
    for (const auto& line : curves_) line->halve(isHalving());
    halved_.extend(ui(), localBounds(), columns, [this](gui::Canvas& kept) {
        for (const auto& line : curves_) {
            if (line->isEnabled()) line->paintHalved(kept, localBounds());
        }
    });
}

void LevelTimeDisplay::paintTables(gui::Canvas& canvas, int opacity) const {
    // A slow curve does not wait for a queue to fill, and is some columns ahead: nothing goes beyond the pen.
    const auto pen = static_cast<float>(infiniteColumns());
    for (const auto& line : curves_) {
        if (!line->isEnabled()) continue;
        const float columns = static_cast<float>(line->table().size()) - kTableLead;
        const float right = std::clamp(std::min(columns, pen), 0.0f, width());
        if (right > 0.0f) line->paintTable(canvas, {0.0f, 0.0f, right, height()}, opacity);
        if (right < width()) line->paintRest(canvas, {right, 0.0f, width(), height()}, opacity);
    }
}

void LevelTimeDisplay::paintTablesFrom(gui::Canvas& canvas, float left) const {
    const gui::Canvas::State saved = canvas.state();
    canvas.clip = canvas.clip.value().intersected({left, 0.0f, width(), height()});
    paintTables(canvas, 255);
    canvas.setState(saved);
}

void LevelTimeDisplay::paintPen(gui::Canvas& canvas, float x) {
    if (incomingLine_->isEmpty() || x >= width() - 0.1f) return;
    const gui::Rect& whole = incomingLine_->logicalRect();
    canvas.drawStretched(*incomingLine_, gui::Rect::ofSize(x - lineOffset, 0.0f, whole.width(), height()),
                         whole, whole.height() * 0.25f, gui::multiplyBytes(penAlpha_, displayAlpha));
}

gui::Rect LevelTimeDisplay::labelBounds(const PeakLabel& label) const {
    const gui::Rect& picture = peakLabel_->logicalRect();
    const float x = (penPosition() - static_cast<float>(label.distance)) * squeezeFactor();
    return gui::Rect::ofSize(x - picture.width() * 0.5f, std::trunc(levelToPosition(label.level)) + kLabelGap,
                             picture.width(), picture.height());
}

void LevelTimeDisplay::paintLabels(gui::Canvas& canvas) {
    for (int place = 0; const PeakLabel* label = labels_.published(place); ++place) {
        const int opacity = gui::multiplyBytes(displayAlpha, label->alpha);
        if (opacity == 0) continue;
        const gui::Rect at = labelBounds(*label);
        canvas.drawBitmap(*peakLabel_, at.origin(), opacity);
        gui::Text& text = *labelTexts_[static_cast<std::size_t>(label->index)];
        const float left = at.left + (at.width() - text.width()) * 0.5f;
        const float top = at.top + kLabelTip + (at.height() - kLabelTip - text.height()) * 0.5f;
        canvas.drawText(text, {left, top}, opacity);
    }
}

}  // namespace vanta::interface
