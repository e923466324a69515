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

}  // namespace vanta::kernel
