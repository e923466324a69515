#include "plugin/presets/preset_map.hpp"

#include <algorithm>
#include <cstdint>

namespace vanta {
namespace {

constexpr int kMapVersion = 1;

/// Grows with what is really there, whatever the count promises.
std::vector<int> readInts(BinaryDataReader& reader, std::int64_t count) {
    std::vector<int> values;
    for (std::int64_t i = 0; i < count; ++i) {
        const int value = reader.readInt();
        if (reader.failed()) break;
        values.push_back(value);
    }
    return values;
}

}  // namespace

bool PresetMap::fits(int parameterCount) const {
    const auto dropped = std::count(oldToNew.begin(), oldToNew.end(), -1);
    const auto held = static_cast<std::ptrdiff_t>(oldToNew.size()) - dropped;
    const auto isParameter = [&](int index) { return index >= 0 && index < parameterCount; };
    return static_cast<std::ptrdiff_t>(added.size()) + held == parameterCount &&
           std::all_of(added.begin(), added.end(), isParameter) &&
           std::count_if(oldToNew.begin(), oldToNew.end(), isParameter) == held;
}

std::optional<PresetMap> readPresetMap(BinaryDataReader& reader) {
    if (!reader.expectHeader("PMap") || reader.version() != kMapVersion) return {};
    const int newCount = reader.readInt();
    const int oldCount = reader.readInt();
    if (newCount < 1 || oldCount < 1) return {};
    PresetMap map;
    map.oldToNew = readInts(reader, oldCount);
    const std::int64_t dropped = std::count(map.oldToNew.begin(), map.oldToNew.end(), -1);
    map.added = readInts(reader, std::int64_t{newCount} - oldCount + dropped);
    if (reader.failed()) return {};
    return map;
}

std::string presetMapName(const std::string& tag, int oldVersion) {
    return "PresetMap_" + tag + "_" + std::to_string(oldVersion) + ".qmpresetmap";
}

}  // namespace vanta
