#include <algorithm>
#include <cmath>

#include "gui/graphics/canvas.hpp"
#include "gui/tree/user_interface.hpp"
#include "interface/meters/channel_letters.hpp"
#include "interface/meters/level_meter_display.hpp"

namespace vanta::interface {

using gui::Bitmap;
using gui::Rect;

namespace {

/// Bars that are thinner have no letters.
constexpr float kLetterRoom = 9.0f;

}  // namespace

gui::Rect LevelMeterDisplay::areaOf(int bar, Span span) const {
    const auto from = static_cast<float>(barPosition(bar));
    const float to = std::max(static_cast<float>(barPosition(bar + 1)) - 1.0f, from + 1.0f);
    if (isVertical()) return {from, span.start, to, span.end};
    return {span.start, from, span.end, to};
}

void LevelMeterDisplay::buildImages() {
    if (cached_) return;
    cached_ = true;
    const Bitmap& behind = style_->partBack->isEmpty() ? *style_->part : *style_->partBack;
    buildImage(back_, style_->backGradient, behind);
    buildImage(bar_, style_->barGradient, *style_->part);
    paintSeparators(*back_);
    if (style_->slowGradient == style_->barGradient) {
        slowBar_->setLogicalSize(0.0f, 0.0f);
    } else {
        buildImage(slowBar_, style_->slowGradient, *style_->part);
    }
}

/// As much of the part as the meter is wide, turned to lie along it.
std::unique_ptr<Bitmap> LevelMeterDisplay::tileOf(const Bitmap& part, float tileLength) const {
    const std::unique_ptr<Bitmap> turned = ui().createBitmap();
    if (!isVertical()) turned->transposeFrom(part);
    std::unique_ptr<Bitmap> tile = ui().createBitmap();
    tile->setLogicalSize(isVertical() ? breadth() : tileLength, isVertical() ? tileLength : breadth());
    tile->canvas().drawBitmap(isVertical() ? part : *turned, gui::Point{});
    return tile;
}

/// The part repeated along the meter, each piece in its colour. A piece ends where a band of colour does.
void LevelMeterDisplay::buildImage(std::unique_ptr<Bitmap>& image, const gui::Gradient& gradient,
                                   const Bitmap& part) const {
    image->setLogicalSize(localBounds().width(), localBounds().height());
    if (image->isEmpty()) return;
    image->fill();
    if (part.isEmpty() || gradient.isEmpty()) return;

    const float tileLength = std::max(part.logicalRect().height(), 1.0f);
    const std::unique_ptr<Bitmap> tile = tileOf(part, tileLength);
    const std::unique_ptr<Bitmap> tinted = ui().createBitmap();
    std::vector<float> cuts;
    for (float position = 0.0f; position < length(); position += tileLength) cuts.push_back(position);
    for (const ColorStop& stop : stops_) {
        if (stop.position > 0.0f && stop.position < length()) cuts.push_back(stop.position);
    }
    std::ranges::sort(cuts);
    cuts.push_back(length());
    for (std::size_t i = 0; i + 1 < cuts.size(); ++i) {
        const float start = cuts[i], end = cuts[i + 1];
        if (!(end > start)) continue;
        tinted->tintFrom(*tile, gradient.at(fractionOf((start + end) / 2.0f)));
        const float within = std::fmod(start, tileLength);
        const Rect target =
            isVertical() ? Rect{0.0f, start, breadth(), end} : Rect{start, 0.0f, end, breadth()};
        image->canvas().drawBitmap(*tinted, target,
                                   isVertical() ? gui::Point{0.0f, within} : gui::Point{within, 0.0f});
    }
}

void LevelMeterDisplay::paintSeparators(Bitmap& image) const {
    const gui::Color color{0, 0, 0, static_cast<std::uint8_t>(style_->separatorAlpha.value())};
    for (int bar = 1; bar < barCount(); ++bar) {
        if (channelGroup(channelOrder(bar)) == channelGroup(channelOrder(bar - 1))) continue;
        const auto gap = static_cast<float>(barPosition(bar)) - 1.0f;
        image.canvas().fillRect(
            isVertical() ? Rect{gap, 0.0f, gap + 1.0f, length()} : Rect{0.0f, gap, length(), gap + 1.0f},
            color);
    }
}

void LevelMeterDisplay::paint(gui::Canvas& canvas) {
    buildImages();
    if (back_->isEmpty()) return;
    canvas.drawBitmap(*back_, gui::Point{});
    const Bitmap& slowImage = slowBar_->isEmpty() ? *bar_ : *slowBar_;
    for (int bar = 0; bar < barCount(); ++bar) {
        const Readings& fast = fast_[at(channelOrder(bar))];
        const Readings& slow = slow_[at(channelOrder(bar))];
        if (fast.source) paintSource(canvas, bar, fast, *bar_, slow.source ? slowAlpha.value() : 255);
        if (slow.source) paintSource(canvas, bar, slow, slowImage, 255);
    }
    paintLetters(canvas);
}

void LevelMeterDisplay::paintSource(gui::Canvas& canvas, int bar, const Readings& readings,
                                    const Bitmap& image, int fade) const {
    const int opacity = gui::multiplyBytes(barAlpha, fade);
    float end = quantised(readings.level);
    const bool isLevel = interpretation == LevelInterpretation::Level;
    if (isLevel && (limitAtOffset || splitAtOffset)) {
        end = growsToStart() ? std::max(end, offset.value()) : std::min(end, offset.value());
    }
    const float root = barRoot();
    const Span lit{std::min(root, end), std::max(root, end)};
    const bool isGrown = growsToStart() ? end < root : end > root;
    if (isGrown) {
        const Rect area = areaOf(bar, lit);
        canvas.drawBitmap(image, area, area.origin(), opacity);
    }
    paintPeak(canvas, bar, readings.peak, image, opacity);
}

void LevelMeterDisplay::paintPeak(gui::Canvas& canvas, int bar, float level, const Bitmap& image,
                                  int opacity) const {
    const LevelRange range = peakRange();
    const bool isLevel = interpretation == LevelInterpretation::Level;
    if (isLevel ? !(level > range.low) : !(level < 0.0f)) return;
    const float peak = quantised(std::clamp(level, range.low, range.high));
    // The line ends the bar that reaches to the peak.
    Span line = growsToStart() ? Span{peak, peak + step} : Span{peak - step, peak};
    const bool isOver = isLevel && (growsToStart() ? peak < offset : peak > offset);
    if (isOver && splitAtOffset) {
        line = growsToStart() ? Span{peak - step, offset - step} : Span{offset + step, peak + step};
    } else if (isOver && limitAtOffset) {
        line = growsToStart() ? Span{peak, offset} : Span{offset, peak};
    }
    const Rect area = areaOf(bar, line);
    gui::Point source = area.origin();
    if (isOver && splitAtOffset) {
        const float shift = growsToStart() ? step.value() : -step.value();
        (isVertical() ? source.y : source.x) += shift;
    }
    canvas.drawBitmap(image, area, source, opacity);
}

void LevelMeterDisplay::paintLetters(gui::Canvas& canvas) const {
    const Bitmap& letters = *style_->channelLabels;
    const Rect first = areaOf(0, {0.0f, length()});
    const bool fits = (isVertical() ? first.width() : first.height()) >= kLetterRoom;
    if (layout <= kMonoLayout || letters.isEmpty() || !fits) return;
    const Rect& sheet = letters.logicalRect();
    const float cell = sheet.width() / static_cast<float>(kLetterCells);
    const std::span<const int> types = channelTypes(layout);
    for (int bar = 0; bar < barCount(); ++bar) {
        const Rect area = areaOf(bar, {0.0f, length()});
        const auto index = static_cast<float>(letterCell(types[at(channelOrder(bar))]));
        const float x = isVertical() ? (area.left + area.right - cell) / 2.0f : labelInset.value();
        const float y = isVertical() ? length() - labelInset - sheet.height()
                                     : (area.top + area.bottom - sheet.height()) / 2.0f;
        canvas.drawBitmap(letters, Rect::ofSize(std::round(x), std::round(y), cell, sheet.height()),
                          {index * cell, 0.0f});
    }
}

}  // namespace vanta::interface
