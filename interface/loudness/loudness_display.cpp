#include "interface/loudness/loudness_display.hpp"

#include <algorithm>
#include <cmath>

#include "gui/controls/picture.hpp"
#include "gui/tree/user_interface.hpp"
#include "interface/loudness/meter_colors.hpp"
#include "interface/meters/level_reading.hpp"
#include "interface/meters/level_text.hpp"

namespace vanta::interface {
namespace {

/// By which the bracket is longer than the range, on each side.
constexpr float kOverhang = 5.0f;
/// Of the upper text above the middle of the bracket.
constexpr float kTextRise = 13.0f;
constexpr float kTextGap = 13.0f;
/// Around the target's number on a scale that lies.
constexpr float kTargetClearance = 15.0f;
constexpr gui::Color kBehindText{11, 12, 16, 255};

std::unique_ptr<gui::Text> makeText(gui::UserInterface& ui, float points) {
    std::unique_ptr<gui::Text> text = ui.createText();
    text->fontName = "Inter Medium";
    text->fontSize = points;
    text->color = kRangeColor;
    return text;
}

}  // namespace

LoudnessDisplay::LoudnessDisplay(gui::UserInterface& interface, gui::Animator* animatedBy)
    : DisplayGridLink(interface, animatedBy),
      labelText_(makeText(interface, 6.75f)),
      rangeImage_(gui::loadPicture(interface, "LoudnessRange")),
      rangeShadow_(gui::loadPicture(interface, "LoudnessRangeShadow")),
      numberText_(makeText(interface, 9.0f)) {
    labelText_->text = "LRA";
}

void LoudnessDisplay::setPlaces(const gui::Rect& lines, float bracket, float first, float last) {
    lines_ = lines;
    bracket_ = bracket;
    first_ = first;
    last_ = last;
    linesChanged();
}

void LoudnessDisplay::animate() {
    DisplayGridLink::animate();
    if (!isShown() || !rangeSource) return;
    const float range = rangeSource->value(wave::LevelSource::Range);
    const float low = rangeSource->value(wave::LevelSource::RangeLow);
    if (isSameReading(range, range_) && isSameReading(low, low_)) return;
    range_ = range;
    low_ = low;
    markDirty();
}

void LoudnessDisplay::paint(gui::Canvas& canvas) {
    DisplayGridLink::paint(canvas);
    if (!toGrid() || !(range_ > 0.0f) || isSilence(low_)) return;
    const float a = farPosition(low_), b = farPosition(low_ + range_);
    const float start = std::min(a, b) - kOverhang, end = std::max(a, b) + kOverhang;
    if (isVertical()) {
        paintUpright(canvas, start, end);
    } else {
        paintLying(canvas, start, end);
    }
}

void LoudnessDisplay::write(gui::Canvas& canvas, gui::Text& text, gui::Point at) const {
    canvas.drawText(text, {std::round(at.x), std::round(at.y)});
}

void LoudnessDisplay::paintUpright(gui::Canvas& canvas, float start, float end) {
    const float width = rangeImage_->logicalRect().width();
    const gui::Rect band{bracket_, std::round(start), bracket_ + width, std::round(end)};
    const gui::Canvas::State saved = canvas.state();
    canvas.clip = canvas.clip.value().intersected({0.0f, first_, localBounds().right, last_});
    for (const gui::Bitmap* image : {rangeShadow_.get(), rangeImage_.get()}) {
        canvas.drawStretched(*image, band, image->logicalRect());
    }
    canvas.setState(saved);
    numberText_->text = signedNumber("%.1f", range_);
    const float middle = std::clamp((std::max(start, first_) + std::min(end, last_)) / 2.0f,
                                    first_ + kTextRise, last_ - kTextRise);
    const float left = bracket_ + kTextGap + 3.0f;
    write(canvas, *labelText_, {left, middle - kTextRise});
    write(canvas, *numberText_, {left, middle - 2.0f});
}

/// A line with its text above, over whatever numbers stand there.
void LoudnessDisplay::paintLying(gui::Canvas& canvas, float start, float end) {
    const gui::Rect band{std::round(start), bracket_, std::round(end), bracket_ + 1.0f};
    const gui::Canvas::State saved = canvas.state();
    canvas.clip = canvas.clip.value().intersected({first_, 0.0f, last_, localBounds().bottom});
    canvas.fillRect(band, kRangeColor);
    canvas.fillRect({band.left, band.top, band.left + 1.0f, band.top + 3.0f}, kRangeColor);
    canvas.fillRect({band.right - 1.0f, band.top, band.right, band.top + 3.0f}, kRangeColor);
    canvas.setState(saved);
    labelText_->text = signedNumber("LRA %.1f", range_);
    const float width = labelText_->width(), height = labelText_->height();
    const float left = besideTarget((start + end - width) / 2.0f, width);
    const gui::Rect room{left - 2.0f, std::max(bracket_ - height, 2.0f), left + width + 2.0f, bracket_};
    clearNumbers(canvas, room);
    write(canvas, *labelText_, {left, bracket_ - height - labelText_->baselineOffset()});
}

/// The number of the target stays in sight.
float LoudnessDisplay::besideTarget(float left, float width) const {
    const float last = std::max(last_ - width, first_);
    const std::optional<float> target = toGrid()->exemptLevel;
    if (!target) return std::clamp(left, first_, last);
    const float middle = farPosition(*target);
    const bool meets = left < middle + kTargetClearance && left + width > middle - kTargetClearance;
    if (meets) left = middle - kTargetClearance - width;
    if (left < first_) left = meets ? middle + kTargetClearance : first_;
    return std::min(left, last);
}

/// A number that would be cut goes altogether.
void LoudnessDisplay::clearNumbers(gui::Canvas& canvas, const gui::Rect& room) const {
    canvas.fillRect(room, kBehindText);
    const gui::Point shift = toGrid()->control().toWindow(gui::Point{}) - toWindow(gui::Point{});
    for (const gui::Rect& area : toGrid()->numberAreas()) {
        const gui::Rect number = area.translated(shift);
        if (number.left < room.right && number.right > room.left) {
            canvas.fillRect({number.left, room.top, number.right, room.bottom}, kBehindText);
        }
    }
}

}  // namespace vanta::interface
