#include "limiter/model/preset_maps.hpp"

#include <array>
#include <cstddef>
#include <cstdint>

#include "foundation/resource.hpp"

namespace vanta {
namespace {

constexpr std::int32_t kNewCount = 31;
constexpr std::int32_t kOldCount = 28;

/// Tag, map version and counts; then where the old values go; then what the old version lacked.
// clang-format off
constexpr std::array<std::int32_t, 4 + kOldCount + 3> kVersion1{
    'P' | 'M' << 8 | 'a' << 16 | 'p' << 24, 1, kNewCount, kOldCount,
    0, 1, 2, 3, 4, 5, 6, 9, 10, 11, 12, 13, 14, 15, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30,
    7, 8, 16};
// clang-format on

template <std::size_t count>
constexpr std::array<std::byte, 4 * count> littleEndian(const std::array<std::int32_t, count>& values) {
    std::array<std::byte, 4 * count> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<std::byte>(static_cast<std::uint32_t>(values[i / 4]) >> (8 * (i % 4)) & 0xFF);
    }
    return bytes;
}

constexpr auto kVersion1Bytes = littleEndian(kVersion1);
constexpr std::array<Resource, 1> kMaps{{{"PresetMap_Vn2p_1.qmpresetmap", kVersion1Bytes}}};

}  // namespace

void registerPresetMaps() {
    addResources(kMaps);
}

}  // namespace vanta
