// Rows of pixels against plain arithmetic in whole numbers: on every instruction set, at awkward lengths and
// alignments, and with nothing written beside the row.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <random>
#include <vector>

#include "kernel/pixel_rows.hpp"
#include "tests/support/instruction_sets.hpp"

namespace vanta::test {
namespace {

using Row = std::vector<std::uint32_t>;

int byteOf(std::uint32_t pixel, int index) {
    return static_cast<int>(pixel >> (8 * index) & 255u);
}
int product(int a, int b) {
    return static_cast<int>(std::lround(a * b / 255.0));
}
std::uint32_t pixelOf(const std::function<int(int)>& byte) {
    std::uint32_t pixel = 0;
    for (int i = 0; i < 4; ++i) pixel |= static_cast<std::uint32_t>(byte(i)) << (8 * i);
    return pixel;
}
std::uint32_t over(std::uint32_t source, std::uint32_t target) {
    const int kept = byteOf(source, 3);
    return pixelOf([&](int i) {
        return std::min(255, product(byteOf(target, i), kept) + (i < 3 ? byteOf(source, i) : 0));
    });
}
std::uint32_t faded(std::uint32_t pixel, int factor) {
    return pixelOf([&](int i) {
        return i < 3 ? product(byteOf(pixel, i), factor) : 255 - product(255 - byteOf(pixel, 3), factor);
    });
}

/// Premultiplied pixels of any opacity, the ends among them.
Row randomRow(unsigned seed, std::size_t count) {
    std::mt19937 random(seed);
    Row row(count);
    for (std::uint32_t& pixel : row) {
        const unsigned kind = random() % 4;
        const int opacity = kind == 0 ? 0 : kind == 1 ? 255 : static_cast<int>(random() % 256);
        pixel = pixelOf([&](int i) {
            return i == 3 ? 255 - opacity : static_cast<int>(random() % static_cast<unsigned>(opacity + 1));
        });
    }
    return row;
}

TEST(PixelRows, AreLaidOverEachOtherAsWholeNumbersAre) {
    const Row source = randomRow(1, 400), mask = randomRow(2, 400), target = randomRow(3, 400);
    // Ramps that have not begun, are under way and are over.
    constexpr std::uint32_t kFrom = 0x00FF8001, kTo = 0xFF00FE33;
    std::vector<std::int32_t> first(400);
    std::vector<float> start(400), rate(400);
    for (std::size_t i = 0; i < first.size(); ++i) {
        start[i] = static_cast<float>(i * 7 % 50) + 0.25f;
        first[i] = static_cast<std::int32_t>(start[i]);
        rate[i] = i % 5 == 0 ? 256000.0f : 8.0f;
    }
    // Places between pixels, in no order.
    std::vector<std::int32_t> index(400);
    std::vector<std::uint32_t> share(400);
    for (std::size_t i = 0; i < index.size(); ++i) {
        index[i] = static_cast<std::int32_t>(i * 37 % (source.size() - 1));
        share[i] = static_cast<std::uint32_t>(i * 53 % 257);
    }
    const auto check = [&](const char* name, auto run, auto expected) {
        for (const std::size_t length : {0, 1, 2, 3, 4, 7, 8, 9, 15, 16, 17, 33, 300}) {
            for (std::size_t offset = 0; offset < 3; ++offset) {
                Row out = target;
                run(offset, out.data() + offset, length);
                for (std::size_t i = 0; i < out.size(); ++i) {
                    const bool inside = i >= offset && i < offset + length;
                    ASSERT_EQ(out[i], inside ? expected(i) : target[i])
                        << name << " at " << i << " of " << length;
                }
            }
        }
    };
    forEachInstructionSet([&](const char* set) {
        SCOPED_TRACE(set);
        check(
            "blendRow", [&](auto at, auto* out, auto n) { kernel::blendRow(source.data() + at, out, n); },
            [&](auto i) { return over(source[i], target[i]); });
        check(
            "blendPixel", [&](auto, auto* out, auto n) { kernel::blendPixel(0x40102030, out, n); },
            [&](auto i) { return over(0x40102030, target[i]); });
        check(
            "rampRows",
            [&](auto at, auto* out, auto n) {
                kernel::rampRows({first.data() + at, start.data() + at, rate.data() + at}, kFrom, kTo, 40, 41,
                                 out, n, n);
            },
            [&](auto i) {
                if (40 < first[i]) return target[i];
                const double weight = std::clamp((40.5 - start[i]) * rate[i], 0.0, 256.0);
                const auto in = static_cast<int>(std::lround(weight));
                return pixelOf(
                    [&](int b) { return (byteOf(kFrom, b) * (256 - in) + byteOf(kTo, b) * in + 128) / 256; });
            });
        check(
            "sampleRow",
            [&](auto at, auto* out, auto n) {
                kernel::sampleRow(source.data(), index.data() + at, share.data() + at, out, n);
            },
            [&](auto i) {
                const auto left = static_cast<std::size_t>(index[i]);
                const auto in = static_cast<int>(share[i]);
                return pixelOf([&](int b) {
                    return (byteOf(source[left], b) * (256 - in) + byteOf(source[left + 1], b) * in + 128) /
                           256;
                });
            });
        for (const int alpha : {0, 1, 100, 255}) {
            const auto a = static_cast<std::uint32_t>(alpha);
            check(
                "blendFadedRow",
                [&](auto at, auto* out, auto n) { kernel::blendFadedRow(source.data() + at, a, out, n); },
                [&](auto i) { return over(faded(source[i], alpha), target[i]); });
            check(
                "blendMaskedRow",
                [&](auto at, auto* out, auto n) {
                    kernel::blendMaskedRow(source.data() + at, mask.data() + at, a, out, n);
                },
                [&](auto i) {
                    const int factor = product(255 - byteOf(mask[i], 3), alpha);
                    return over(faded(source[i], factor), target[i]);
                });
            check(
                "mixRows",
                [&](auto at, auto* out, auto n) {
                    kernel::mixRows(source.data() + at, mask.data() + at, a, out, n);
                },
                [&](auto i) {
                    return pixelOf([&](int b) {
                        const int sum = byteOf(source[i], b) * (255 - alpha) + byteOf(mask[i], b) * alpha;
                        return static_cast<int>(std::lround(sum / 255.0));
                    });
                });
        }
    });
}

}  // namespace
}  // namespace vanta::test
