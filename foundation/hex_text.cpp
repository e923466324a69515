#include "foundation/hex_text.hpp"

#include <charconv>
#include <iterator>

#include <fmt/format.h>

namespace vanta {

std::string toHex(std::span<const std::uint8_t> bytes) {
    std::string digits;
    digits.reserve(2 * bytes.size());
    for (const std::uint8_t byte : bytes) fmt::format_to(std::back_inserter(digits), "{:02x}", byte);
    return digits;
}

std::optional<std::vector<std::uint8_t>> fromHex(std::string_view digits) {
    if (digits.size() % 2) return {};
    std::vector<std::uint8_t> bytes;
    bytes.reserve(digits.size() / 2);
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        std::uint8_t byte = 0;
        const char* end = digits.data() + i + 2;
        const auto result = std::from_chars(digits.data() + i, end, byte, 16);
        if (result.ec != std::errc{} || result.ptr != end) return {};
        bytes.push_back(byte);
    }
    return bytes;
}

}  // namespace vanta
