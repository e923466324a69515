#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vanta {

enum class Endian { Little, Big };

/// The bytes as one number. At most 8 of them.
inline std::uint64_t unpacked(std::string_view bytes, Endian endian) {
    std::uint64_t result = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const std::size_t from = endian == Endian::Big ? i : bytes.size() - 1 - i;
        result = result << 8 | static_cast<unsigned char>(bytes[from]);
    }
    return result;
}

/// The lowest `width` bytes of the number.
inline std::string packed(std::uint64_t number, std::size_t width, Endian endian) {
    std::string bytes(width, '\0');
    for (std::size_t i = 0; i < width; ++i) {
        const std::size_t to = endian == Endian::Little ? i : width - 1 - i;
        bytes[to] = static_cast<char>(number >> (8 * i) & 0xFF);
    }
    return bytes;
}

}  // namespace vanta
