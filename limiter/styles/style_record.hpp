#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "limiter/styles/engine_layout.hpp"

namespace vanta {

inline constexpr std::string_view kStyleTag = "QDyn";
inline constexpr std::int32_t kStyleVersion = 19;
inline constexpr std::size_t kStyleRecordSize = 12 + 4 * kStyleValueCount;

/// The stored form of a style, kStyleRecordSize bytes: tag, version and count, then the values as IEEE
/// float32, all little-endian. `values` holds kStyleValueCount values in table order.
std::vector<std::byte> writeStyleRecord(std::span<const float> values);

/// The values of a record. Throws StyleError if size, tag, version or count are not those of a style.
std::vector<float> readStyleRecord(std::span<const std::byte> record);

}  // namespace vanta
