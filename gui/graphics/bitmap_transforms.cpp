// Bitmaps made of other bitmaps.

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "gui/graphics/bitmap.hpp"
#include "gui/graphics/text_mask.hpp"
#include "kernel/pixel_rows.hpp"

namespace vanta::gui {
namespace {

/// The pixels of a row of `bitmap` from `left` on; what lies outside the bitmap is transparent.
void copyRow(const Bitmap& bitmap, int y, int left, Pixel* target, int count) {
    std::fill_n(target, count, kTransparentPixel);
    if (y < 0 || y >= bitmap.pixelRect().bottom) return;
    const int from = std::max(left, 0);
    const int to = std::min(left + count, bitmap.pixelRect().right);
    if (from < to) std::copy(bitmap.row(y) + from, bitmap.row(y) + to, target + (from - left));
}

/// Between four pixels; what lies outside the bitmap is transparent.
Pixel sampled(const Bitmap& bitmap, float x, float y) {
    const DeviceRect& bounds = bitmap.pixelRect();
    if (!(x > -1.0f && y > -1.0f && x < static_cast<float>(bounds.right) &&
          y < static_cast<float>(bounds.bottom))) {
        return kTransparentPixel;
    }
    const int column = static_cast<int>(std::floor(x));
    const int row = static_cast<int>(std::floor(y));
    const auto at = [&](int px, int py) {
        return bounds.contains({px, py}) ? bitmap.row(py)[px] : kTransparentPixel;
    };
    const auto weight = [](float position, int whole) {
        return static_cast<unsigned>(std::lround((position - static_cast<float>(whole)) * 256.0f));
    };
    const unsigned wx = weight(x, column), wy = weight(y, row);
    return mixPixels(mixPixels(at(column, row), at(column + 1, row), wx),
                     mixPixels(at(column, row + 1), at(column + 1, row + 1), wx), wy);
}

}  // namespace

void Bitmap::fill(Color color) {
    const UpdateBlock block(*this);
    std::fill_n(pixels_.get(), pixelCount(), toPixel(color));
    hasAlpha = true;
    contentChanged();
    markDirty(pixelRect_);
}

void Bitmap::copyFrom(const Bitmap& other) {
    if (&other == this) return;
    const UpdateBlock block(*this);
    become(other.pixelRect_.right, other.pixelRect_.bottom, other.logicalRect_, other.hasAlpha);
    std::copy_n(other.pixels_.get(), pixelCount(), pixels_.get());
    markDirty(pixelRect_);
}

void Bitmap::crossfade(const Bitmap& from, const Bitmap& to, int amount, const Rect* rect) {
    const UpdateBlock block(*this);
    const Rect logical = rect ? rect->intersected(from.logicalRect_) : from.logicalRect_;
    const DeviceRect part = rect ? toDevice(logical, scale()).intersected(from.pixelRect_) : from.pixelRect_;
    const bool covered = to.pixelRect_.intersected(part) == part;
    become(part.width(), part.height(), {0.0f, 0.0f, logical.width(), logical.height()},
           from.hasAlpha || to.hasAlpha || !covered);
    if (isEmpty()) return;
    std::vector<Pixel> other(static_cast<std::size_t>(part.width()));
    for (int y = 0; y < part.height(); ++y) {
        copyRow(to, part.top + y, part.left, other.data(), part.width());
        kernel::mixRows(from.row(part.top + y) + part.left, other.data(), static_cast<std::uint32_t>(amount),
                        row(y), other.size());
    }
    markDirty(pixelRect_);
}

void Bitmap::tintFrom(const Bitmap& source, Color color) {
    const UpdateBlock block(*this);
    become(source.pixelRect_.right, source.pixelRect_.bottom, source.logicalRect_,
           source.hasAlpha || color.alpha != 255);
    std::transform(source.pixels_.get(), source.pixels_.get() + pixelCount(), pixels_.get(), [&](Pixel p) {
        const Color own = toColor(p);
        return toPixel({multiplyBytes(own.red, color.red), multiplyBytes(own.green, color.green),
                        multiplyBytes(own.blue, color.blue), multiplyBytes(own.alpha, color.alpha)});
    });
    markDirty(pixelRect_);
}

void Bitmap::flipFrom(const Bitmap& source, unsigned flips) {
    const UpdateBlock block(*this);
    become(source.pixelRect_.right, source.pixelRect_.bottom, source.logicalRect_, source.hasAlpha);
    for (int y = 0; y < pixelRect_.bottom; ++y) {
        const Pixel* from = source.row(flips & TopToBottom ? pixelRect_.bottom - 1 - y : y);
        if (flips & LeftToRight) {
            std::reverse_copy(from, from + pixelRect_.right, row(y));
        } else {
            std::copy_n(from, pixelRect_.right, row(y));
        }
    }
    markDirty(pixelRect_);
}

void Bitmap::rotateFrom(const Bitmap& source, float angle, Point sourceCenter, Point targetCenter) {
    const UpdateBlock block(*this);
    const float s = std::sin(angle), c = std::cos(angle);
    for (int y = 0; y < pixelRect_.bottom; ++y) {
        const float dy = static_cast<float>(y) - targetCenter.y * scale();
        Pixel* const target = row(y);
        for (int x = 0; x < pixelRect_.right; ++x) {
            const float dx = static_cast<float>(x) - targetCenter.x * scale();
            target[x] = sampled(source, sourceCenter.x * scale() + c * dx + s * dy,
                                sourceCenter.y * scale() - s * dx + c * dy);
        }
    }
    hasAlpha = true;
    contentChanged();
    markDirty(pixelRect_);
}

void Bitmap::squeezeFrom(const Bitmap& source, int firstRow, float factor) {
    const UpdateBlock block(*this);
    const int width = source.pixelRect_.right;
    const int columns = std::min(static_cast<int>(static_cast<float>(width) * factor), pixelRect_.right);
    const int rows = std::min(source.pixelRect_.bottom - firstRow, pixelRect_.bottom);
    if (columns <= 0 || rows <= 0 || width < 2) return;
    const auto count = static_cast<std::size_t>(columns);
    std::vector<std::int32_t> index(count);
    std::vector<std::uint32_t> weight(count);
    // Before the last column, as what lies behind it is read as well.
    const float last = static_cast<float>(width - 1) - 1.0f / 256.0f;
    const float distance = 1.0f / factor;
    for (std::size_t i = 0; i < count; ++i) {
        const float at = std::clamp((static_cast<float>(i) + 0.5f) * distance - 0.5f, 0.0f, last);
        index[i] = static_cast<std::int32_t>(at);
        weight[i] = static_cast<std::uint32_t>((at - static_cast<float>(index[i])) * 256.0f);
    }
    for (int y = 0; y < rows; ++y) {
        kernel::sampleRow(source.row(firstRow + y), index.data(), weight.data(), row(y), count);
    }
    hasAlpha = source.hasAlpha.value();
    contentChanged();
    markDirty({0, 0, columns, rows});
}

void Bitmap::transposeFrom(const Bitmap& source) {
    const UpdateBlock block(*this);
    become(source.pixelRect_.bottom, source.pixelRect_.right,
           {0.0f, 0.0f, source.logicalRect_.bottom, source.logicalRect_.right}, source.hasAlpha);
    for (int y = 0; y < pixelRect_.bottom; ++y) {
        for (int x = 0; x < pixelRect_.right; ++x) row(y)[x] = source.row(pixelRect_.right - 1 - x)[y];
    }
    markDirty(pixelRect_);
}

void Bitmap::setTextMask(Color color) {
    const UpdateBlock block(*this);
    const auto& coverage = textCoverage(color);
    const Pixel full = toPixel(color);
    std::array<Pixel, 256> covered;
    for (std::size_t v = 0; v < covered.size(); ++v) {
        const int c = coverage[v];
        covered[v] = pixelOf(multiplyBytes(static_cast<int>(full >> 16 & 255u), c),
                             multiplyBytes(static_cast<int>(full >> 8 & 255u), c),
                             multiplyBytes(static_cast<int>(full & 255u), c), multiplyBytes(color.alpha, c));
    }
    std::transform(pixels_.get(), pixels_.get() + pixelCount(), pixels_.get(),
                   [&](Pixel p) { return covered[p & 255u]; });
    hasAlpha = true;
    contentChanged();
    markDirty(pixelRect_);
}

}  // namespace vanta::gui
