#include "limiter/model/preset_maps.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "foundation/resource.hpp"
#include "limiter/model/vanta_preset.hpp"

namespace vanta {
namespace {

/// How many values a preset of each version holds. What is out in the world stays.
constexpr std::array<std::int32_t, kPresetVersion> kValueCounts{28, 31};

constexpr bool isHeld(const ParameterRow& row, int version) {
    return row.sincePreset <= version;
}
static_assert(
    [] {
        int version = 0;
        return std::ranges::all_of(kValueCounts, [&](std::int32_t count) {
            ++version;
            return count == std::ranges::count_if(kParameterTable, [&](const ParameterRow& row) {
                       return isHeld(row, version);
                   });
        });
    }(),
    "a new row of the parameter table has a new preset version as its sincePreset");

/// A word of the map, then its version, the counts, and for each parameter its index.
using Map = std::array<std::int32_t, 4 + kParameterTable.size()>;

/// From the values of an older version to today's parameters: where its own go, then what it lacks.
constexpr Map mapFrom(int version) {
    Map map{'P' | 'M' << 8 | 'a' << 16 | 'p' << 24, 1, static_cast<std::int32_t>(kParameterTable.size()),
            kValueCounts[static_cast<std::size_t>(version - 1)]};
    auto end = map.begin() + 4;
    for (const bool held : {true, false}) {
        std::int32_t index = 0;
        for (const ParameterRow& row : kParameterTable) {
            if (isHeld(row, version) == held) *end++ = index;
            ++index;
        }
    }
    return map;
}

template <std::size_t count>
constexpr std::array<std::byte, 4 * count> littleEndian(const std::array<std::int32_t, count>& values) {
    std::array<std::byte, 4 * count> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<std::byte>(static_cast<std::uint32_t>(values[i / 4]) >> (8 * (i % 4)) & 0xFF);
    }
    return bytes;
}

template <int version>
constexpr auto kMapBytes = littleEndian(mapFrom(version));

constexpr std::array<Resource, kPresetVersion - 1> kMaps{{
    {"PresetMap_Vn2p_1.qmpresetmap", kMapBytes<1>},
}};
static_assert(!kMaps.back().bytes.empty(), "each older version has a map");

}  // namespace

void registerPresetMaps() {
    addResources(kMaps);
}

}  // namespace vanta
