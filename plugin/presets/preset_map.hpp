#pragma once

#include <optional>
#include <string>
#include <vector>

#include "foundation/binary_data.hpp"

namespace vanta {

/// Says where the values of an older preset version belong.
struct PresetMap {
    std::vector<int> oldToNew;  ///< the parameter of each old position, -1 for one that no longer exists
    std::vector<int> added;     ///< the parameters that the old version lacks

    /// Whether the map leads to exactly `parameterCount` parameters.
    bool fits(int parameterCount) const;
};

/// Reads "PMap", 1, the new count, the old count, and then the members of PresetMap; 4-byte little-endian
/// integers. Needs no more memory than the file is long.
std::optional<PresetMap> readPresetMap(BinaryDataReader& reader);

/// The name of the resource that maps `oldVersion` of the plug-in with this tag to the current version.
std::string presetMapName(const std::string& tag, int oldVersion);

}  // namespace vanta
