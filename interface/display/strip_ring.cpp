#include "interface/display/strip_ring.hpp"

#include <algorithm>
#include <cmath>

namespace vanta::interface {

/// As many as a width can touch at both ends, one for a pen between two pixels, and the one being written.
void StripRing::resize(float width, float height, int stripWidth) {
    width_ = stripWidth;
    height_ = height;
    const int count = static_cast<int>(std::ceil(std::max(width, 0.0f) / static_cast<float>(width_))) + 2;
    strips_.resize(static_cast<std::size_t>(count));
    for (auto& strip : strips_) {
        if (!strip) strip = ui_.createBitmap();
        strip->setLogicalSize(static_cast<float>(width_), height);
        strip->hasAlpha = true;
    }
    current_ = 0;
    column_ = 0;
}

void StripRing::clear(const Draw& drawOld) {
    current_ = 0;
    column_ = 0;
    for (std::size_t i = 0; i < strips_.size(); ++i) {
        strips_[i]->fill();
        if (i > 0)
            drawOld(strips_[i]->canvas(), gui::Rect::ofSize(0.0f, 0.0f, static_cast<float>(width_), height_));
    }
}

void StripRing::write(int columns, const Draw& draw) {
    gui::Rect area =
        gui::Rect::ofSize(static_cast<float>(column_), 0.0f, static_cast<float>(columns), height_);
    while (columns > 0) {
        const int count = std::min(width_ - column_, columns);
        draw(strips_[current_]->canvas(), area);
        columns -= count;
        column_ += count;
        if (column_ < width_) return;
        nextStrip();
        area = area.translated({-static_cast<float>(width_), 0.0f});
    }
}

void StripRing::nextStrip() {
    current_ = (current_ + strips_.size() - 1) % strips_.size();
    column_ = 0;
    strips_[current_]->fill();
}

void StripRing::paint(gui::Canvas& canvas, float x, int alpha) const {
    const auto width = static_cast<float>(width_);
    float left = x - static_cast<float>(column_);
    for (std::size_t i = 0; i < strips_.size() && left > -width; ++i) {
        canvas.drawBitmap(*strips_[(current_ + i) % strips_.size()], {left, 0.0f}, alpha);
        left -= width;
    }
}

}  // namespace vanta::interface
