#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vanta::vst3 {

/// Writes UTF-8 as UTF-16 into `size` places, cut at a character and padded with zeros, of which there is at
/// least one. What is no UTF-8 becomes U+FFFD.
void writeUtf16(std::string_view text, std::int16_t* out, std::size_t size);

template <std::size_t size>
void writeUtf16(std::string_view text, std::int16_t (&out)[size]) {
    writeUtf16(text, out, size);
}

/// UTF-8 of what stands before the first zero, and within `limit` places.
std::string readUtf16(const std::int16_t* text, std::size_t limit);

}  // namespace vanta::vst3
