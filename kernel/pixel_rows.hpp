#pragma once

#include <cstdint>

#include "kernel/kernel.hpp"

/// Rows of pixels laid over each other. A pixel is four bytes: blue, green, red and, highest, 255 less the
/// opacity; its colours are premultiplied by the opacity. Bytes multiply as fractions of 255, rounded. A row
/// of source and target may not overlap; any length and alignment.
namespace vanta::kernel {

/// target = source over target
extern const Kernel<void(const std::uint32_t* source, std::uint32_t* target, std::size_t count)> blendRow;
/// The same with the source's opacity and colours times `alpha`, 0 to 255.
extern const Kernel<void(const std::uint32_t* source, std::uint32_t alpha, std::uint32_t* target,
                         std::size_t count)>
    blendFadedRow;
/// The same again, times the opacity of each pixel of `mask`.
extern const Kernel<void(const std::uint32_t* source, const std::uint32_t* mask, std::uint32_t alpha,
                         std::uint32_t* target, std::size_t count)>
    blendMaskedRow;
/// One pixel over all of the target.
extern const Kernel<void(std::uint32_t pixel, std::uint32_t* target, std::size_t count)> blendPixel;
/// target = from + (to - from) * amount / 255 for each byte; `amount` 0 to 255.
extern const Kernel<void(const std::uint32_t* from, const std::uint32_t* to, std::uint32_t amount,
                         std::uint32_t* target, std::size_t count)>
    mixRows;

/// Columns of pixels that begin at rows of their own, and run from one colour to another from there on.
struct PixelRamps {
    const std::int32_t* first;  ///< row of each column; those above it stay as they are
    const float* start;         ///< position along the column where it still has its first colour
    const float* rate;          ///< 256ths of the way to the last colour for each row
};
/// From row `begin` to before row `end`, at `target` the first of them; a row begins `stride` pixels after
/// the one above. The weight is that of the middle of a pixel, rounded to 256ths, as is what is mixed.
extern const Kernel<void(const PixelRamps& ramps, std::uint32_t from, std::uint32_t to, std::int32_t begin,
                         std::int32_t end, std::uint32_t* target, std::size_t stride, std::size_t count)>
    rampRows;

/// target[i] lies between source[index[i]] and the pixel after it: `weight[i]` 256ths of the way, each byte
/// rounded.
extern const Kernel<void(const std::uint32_t* source, const std::int32_t* index, const std::uint32_t* weight,
                         std::uint32_t* target, std::size_t count)>
    sampleRow;

}  // namespace vanta::kernel
