#include "gui/graphics/rescale.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace vanta::gui {
namespace {

struct Source {
    const Pixel* pixels;
    int width;
    int height;

    Pixel at(int x, int y) const {
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(x)];
    }
};

int byteOf(Pixel pixel, int shift) {
    return static_cast<int>(pixel >> shift & 255u);
}

template <typename PixelAt>
PixelBlock filled(int width, int height, PixelAt pixelAt) {
    PixelBlock block{{}, width, height};
    block.pixels.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) block.pixels.push_back(pixelAt(x, y));
    }
    return block;
}

PixelBlock halved(const Source& source) {
    return filled(source.width / 2, source.height / 2, [&](int x, int y) {
        const Pixel corners[] = {source.at(2 * x, 2 * y), source.at(2 * x + 1, 2 * y),
                                 source.at(2 * x, 2 * y + 1), source.at(2 * x + 1, 2 * y + 1)};
        Pixel mean = 0;
        for (int shift = 0; shift < 32; shift += 8) {
            int sum = 2;
            for (const Pixel corner : corners) sum += byteOf(corner, shift);
            mean |= static_cast<Pixel>(sum / 4) << shift;
        }
        return mean;
    });
}

constexpr std::int64_t kNoEdge = 0x40000000;

int largestDifference(Pixel a, Pixel b) {
    int largest = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        largest = std::max(largest, std::abs(byteOf(a, shift) - byteOf(b, shift)));
    }
    return largest;
}

/// How strongly neighbouring columns (or rows) differ, for each boundary between two.
using Activity = std::vector<std::int64_t>;

Activity columnActivity(const Source& source) {
    Activity activity(static_cast<std::size_t>(source.width - 1));
    for (int y = 0; y < source.height; ++y) {
        for (int x = 0; x + 1 < source.width; ++x) {
            activity[static_cast<std::size_t>(x)] += largestDifference(source.at(x, y), source.at(x + 1, y));
        }
    }
    return activity;
}

Activity rowActivity(const Source& source) {
    Activity activity(static_cast<std::size_t>(source.height - 1));
    for (int y = 0; y + 1 < source.height; ++y) {
        for (int x = 0; x < source.width; ++x) {
            activity[static_cast<std::size_t>(y)] += largestDifference(source.at(x, y), source.at(x, y + 1));
        }
    }
    return activity;
}

/// The mean of those that could be edges; `length` is that of the boundary, in pixels.
std::int64_t edgeThreshold(const Activity& activity, int length) {
    std::int64_t sum = 0, count = 0;
    for (const std::int64_t each : activity) {
        if (each <= 16 * std::int64_t{length}) continue;
        sum += each;
        ++count;
    }
    return count > 0 ? sum / count : kNoEdge;
}

/// Which pixels one of the target is made of: `weight` quarters of the one at `position`, the rest of the
/// next.
struct Tap {
    int position;
    int weight;
};

/// The weight of the middle one of three, for the four source positions from `start` on.
int middleWeight(const Activity& activity, std::int64_t threshold, int start) {
    const auto at = [&](int k) -> std::int64_t {
        const int i = start + k;
        if (i < 0) return kNoEdge;
        return i < static_cast<int>(activity.size()) ? activity[static_cast<std::size_t>(i)] : 0;
    };
    if (at(1) <= threshold) return 2;
    std::int64_t best = at(-1);
    int index = -1;
    if (best < at(0)) {
        best = at(0);
        index = 0;
    }
    if (best < at(2)) {
        best = at(2);
        index = 1;
    }
    return best < at(3) || index == 0 ? 3 : 1;
}

std::vector<Tap> taps(const Activity& activity, int length, int sourceSize, int targetSize) {
    const std::int64_t threshold = edgeThreshold(activity, length);
    std::vector<Tap> result;
    for (int i = 0; i < targetSize; ++i) {
        const int start = i / 3 * 4;
        const int third = i % 3;
        const int weight = third == 0 ? 3 : third == 2 ? 1 : middleWeight(activity, threshold, start);
        result.push_back({std::min(start + third, sourceSize - 1), weight});
    }
    return result;
}

PixelBlock threeQuarters(const Source& source, int width, int height) {
    const std::vector<Tap> columns = taps(columnActivity(source), source.height, source.width, width);
    const std::vector<Tap> rows = taps(rowActivity(source), source.width, source.height, height);
    return filled(width, height, [&](int x, int y) {
        const Tap column = columns[static_cast<std::size_t>(x)];
        const Tap row = rows[static_cast<std::size_t>(y)];
        const int right = std::min(column.position + 1, source.width - 1);
        const int below = std::min(row.position + 1, source.height - 1);
        const Pixel a = source.at(column.position, row.position), b = source.at(right, row.position),
                    c = source.at(column.position, below), d = source.at(right, below);
        Pixel result = 0;
        for (int shift = 0; shift < 32; shift += 8) {
            const int upper = column.weight * byteOf(a, shift) + (4 - column.weight) * byteOf(b, shift);
            const int lower = column.weight * byteOf(c, shift) + (4 - column.weight) * byteOf(d, shift);
            const int sum = row.weight * upper + (4 - row.weight) * lower;
            result |= static_cast<Pixel>(sum / 16) << shift;
        }
        return result;
    });
}

PixelBlock nearest(const Source& source, int width, int height) {
    return filled(width, height, [&](int x, int y) {
        return source.at(static_cast<int>(std::int64_t{x} * source.width / width),
                         static_cast<int>(std::int64_t{y} * source.height / height));
    });
}

}  // namespace

PixelBlock rescaled(std::span<const Pixel> pixels, int sourceWidth, int sourceHeight, float factor) {
    const Source source{pixels.data(), sourceWidth, sourceHeight};
    const auto scaled = [&](int size) { return static_cast<int>(static_cast<float>(size) * factor + 0.75f); };
    const int width = scaled(sourceWidth);
    const int height = scaled(sourceHeight);
    if (sourceWidth == 2 * width && sourceHeight == 2 * height) return halved(source);
    if (std::abs(factor - 0.75f) < 1e-4f) return threeQuarters(source, width, height);
    return nearest(source, width, height);
}

}  // namespace vanta::gui
