#include "interface/display/strip_ring.hpp"

#include <algorithm>
#include <cmath>

namespace vanta::interface {

/// As many as a width can touch at both ends, one for a pen between two pixels, and the one being written.
void StripRing::resize(float width, float height) {
    height_ = height;
    const int count = static_cast<int>(std::max(width, 0.0f) / kWidth + 0.96875f + 2.0f);
    strips_.resize(static_cast<std::size_t>(count));
    for (auto& strip : strips_) {
        if (!strip) strip = ui_.createBitmap();
        strip->setLogicalSize(kWidth, height);
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
        if (i > 0) drawOld(strips_[i]->canvas(), gui::Rect{0.0f, 0.0f, kWidth, height_});
    }
}

void StripRing::write(int columns, const Draw& draw) {
    gui::Rect area =
        gui::Rect::ofSize(static_cast<float>(column_), 0.0f, static_cast<float>(columns), height_);
    while (columns > 0) {
        const int count = std::min(kWidth - column_, columns);
        draw(strips_[current_]->canvas(), area);
        columns -= count;
        column_ += count;
        if (column_ < kWidth) return;
        nextStrip();
        area = area.translated({-static_cast<float>(kWidth), 0.0f});
    }
}

void StripRing::nextStrip() {
    current_ = (current_ + strips_.size() - 1) % strips_.size();
    column_ = 0;
    strips_[current_]->fill();
}

void StripRing::paint(gui::Canvas& canvas, float x, int alpha) const {
    float left = x - static_cast<float>(column_);
    for (std::size_t i = 0; i < strips_.size() && left > -kWidth; ++i) {
        canvas.drawBitmap(*strips_[(current_ + i) % strips_.size()], {left, 0.0f}, alpha);
        left -= kWidth;
    }
}

}  // namespace vanta::interface
