#include "gui/text/x11_text.hpp"

#include "gui/text/text_layout.hpp"

namespace vanta::gui {

X11Text::X11Text(DeviceBacking& backing, std::unique_ptr<Bitmap> bitmap)
    : backing_(backing), bitmap_(std::move(bitmap)) {
    backing_.addListener(*this);
}

X11Text::X11Text(DeviceBacking& backing) : X11Text(backing, std::make_unique<Bitmap>(backing)) {}

X11Text::~X11Text() {
    backing_.removeListener(*this);
}

void X11Text::invalidate() {
    state_ = State::Invalid;
    Text::invalidate();
}

void X11Text::backingScaleChanged() {
    invalidate();
}

void X11Text::measure() {
    if (state_ != State::Invalid) return;
    const TextLayout layout(*this, backing_.scale());
    pixelWidth_ = layout.width();
    pixelHeight_ = layout.height();
    state_ = State::Measured;
}

void X11Text::render() {
    const TextLayout layout(*this, backing_.scale());
    pixelWidth_ = layout.width();
    pixelHeight_ = layout.height();
    bitmap_->setPixelSize(pixelWidth_, pixelHeight_);
    if (!bitmap_->isEmpty()) {
        layout.render(bitmap_->row(0), pixelWidth_, pixelHeight_);
        bitmap_->setTextMask(color);
    }
    state_ = State::Rendered;
}

const Bitmap& X11Text::bitmap() {
    if (state_ != State::Rendered) render();
    return *bitmap_;
}

float X11Text::height() {
    measure();
    return static_cast<float>(pixelHeight_) / backing_.scale();
}

float X11Text::width() {
    measure();
    return static_cast<float>(pixelWidth_) / backing_.scale();
}

float X11Text::baselineOffset() const {
    return (backing_.scale() > 1.4f ? -2.0f : -1.0f) / backing_.scale();
}

}  // namespace vanta::gui
