#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vanta {

/// Two lower-case digits for each byte.
std::string toHex(std::span<const std::uint8_t> bytes);
/// The way back, in either case. Nothing if a digit is missing or wrong: half a blob is worth nothing.
std::optional<std::vector<std::uint8_t>> fromHex(std::string_view digits);

}  // namespace vanta
