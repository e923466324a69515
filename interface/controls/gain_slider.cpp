#include "interface/controls/gain_slider.hpp"

#include <algorithm>
#include <cmath>

#include "gui/controls/alignment.hpp"
#include "gui/graphics/gradient.hpp"
#include "gui/tree/user_interface.hpp"
#include "interface/controls/styles.hpp"

namespace vanta::interface {
namespace {

constexpr float kInset = 7.0f;
/// From the edges to the groove, whose picture has it left of the middle.
constexpr float kGrooveTop = 27.0f;
constexpr float kGrooveBottom = 6.0f;
/// From the edges to the thumb at the ends of its way: no bar covers the number on it.
constexpr float kThumbTop = 23.0f;
constexpr float kThumbBottom = -2.0f;
constexpr float kFineFactor = 0.01f;
constexpr int kTrackAlpha = 140;
/// Where the glow is strongest, from the upper end.
const float kBrightest = std::trunc(63.36f);
constexpr gui::Color kGlow{204, 30, 51, 255};

/// Down from nothing to the full glow, and slowly out again below.
gui::Color glowAt(float y, float height) {
    static const gui::Gradient above(kGlow.withAlpha(0), kGlow);
    static const gui::Gradient below(kGlow, kGlow.withAlpha(150), 0.5f, kGlow.withAlpha(0));
    if (y < kBrightest) return above.at(y / kBrightest);
    return below.at((y - kBrightest) / std::max(height - kBrightest, 1.0f));
}

}  // namespace

GainSlider::GainSlider(gui::UserInterface& interface, gui::Animator* animatedBy, Style& sharedStyle)
    : Switch(interface, animatedBy, &sharedStyle),
      meter_(interface.createBitmap()),
      caption_(interface.createText()) {
    const float halfThumb = style().thumbNormal->logicalRect().height() / 2.0f;
    trackStart = kThumbTop + halfThumb;
    trackEnd = kThumbBottom + halfThumb;
    fineFactor = kFineFactor;
    caption_->fontSize = 9.75f;
    caption_->fontName = std::string("Inter Medium");
    caption_->color = kValueColor;
    caption_->onChange.setHandler(this, &GainSlider::captionChanged);
}

void GainSlider::resized() {
    renderMeter();
    Switch::resized();
}

void GainSlider::refreshTree() {
    renderMeter();
    Switch::refreshTree();
}

/// The glow has the shape of the groove, so that no light falls beside it.
void GainSlider::renderMeter() {
    const float width = localBounds().width() - kInset, height = localBounds().height() - kInset;
    const gui::Bitmap& picture = *style().track;
    if (width < 1.0f || groove().isEmpty() || picture.isEmpty()) return;
    const auto makeLayer = [&] {
        std::unique_ptr<gui::Bitmap> layer = ui().createBitmap();
        layer->setLogicalSize(width, height);
        layer->fill();
        return layer;
    };
    const std::unique_ptr<gui::Bitmap> glow = makeLayer(), shape = makeLayer();
    glow->hasAlpha = true;
    shape->hasAlpha = true;
    const float step = 1.0f / ui().deviceBacking().scale();
    for (float y = 0.0f; y < height; y += step) {
        glow->canvas().fillRect({0.0f, y, width, y + step}, glowAt(y + step / 2.0f, height));
    }
    shape->canvas().drawStretched(picture, groove().translated({-kInset, -kInset}), picture.logicalRect());
    meter_ = makeLayer();
    meter_->hasAlpha = true;
    meter_->canvas().drawBitmapMasked(*glow, glow->logicalRect(), {}, *shape, {});
    markDirty();
}

gui::Rect GainSlider::groove() const {
    return {kInset, kGrooveTop, kInset + style().track->logicalRect().width(),
            localBounds().height() - kGrooveBottom};
}

void GainSlider::paintTrack(gui::Canvas& canvas) {
    const auto look = rollover().crossfade(*style().track, *style().trackActive);
    canvas.drawStretched(look.picture, groove(), look.picture.logicalRect(), 0.0f, look.alpha);
    if (!meter_->isEmpty()) canvas.drawBitmap(*meter_, gui::Point{kInset, kInset}, kTrackAlpha);
}

void GainSlider::paintThumb(gui::Canvas& canvas) {
    Switch::paintThumb(canvas);
    const gui::Rect thumb = thumbBounds();
    canvas.drawText(*caption_, {thumb.left + (thumb.width() - caption_->width()) / 2.0f,
                                thumb.top + gui::centredTop(*caption_, thumb.height())});
}

}  // namespace vanta::interface
