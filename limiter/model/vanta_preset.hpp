#pragma once

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <span>
#include <string_view>

#include "limiter/parameters/vanta_parameters.hpp"

namespace vanta {

/// Tag and version of the presets that this build writes.
inline constexpr std::string_view kPresetTag = "Vn2p";
inline constexpr int kPresetVersion =
    std::ranges::max(kParameterTable, {}, &ParameterRow::sincePreset).sincePreset;

enum class LockOutputRule {
    /// While Lock Output is on, the parameters that it keeps come out of a load as they went in: a preset
    /// browser must not undo the levels that a session was set up with.
    Honour,
    /// The file's values count: for the default setting of a new instance, and where a user names the file to
    /// start from, as on a command line.
    Ignore,
};

/// Loads a preset file of this or an older format. False if no format fits, then nothing has changed, or if
/// the file ends early, then what it holds is set.
bool loadPresetFile(VantaParameters& parameters, const std::filesystem::path& path, LockOutputRule rule);

/// The same of a preset in memory.
bool loadPreset(VantaParameters& parameters, std::span<const std::byte> record, LockOutputRule rule);

/// Saves all parameters. False if the file cannot be written; an old file is then unchanged.
bool savePresetFile(VantaParameters& parameters, const std::filesystem::path& path);

}  // namespace vanta
