#pragma once

#include <cstddef>
#include <filesystem>
#include <span>
#include <string_view>

#include "limiter/vanta_parameters.hpp"

namespace vanta {

/// Tag and version of the presets that this build writes.
inline constexpr std::string_view kPresetTag = "Vn2p";
inline constexpr int kPresetVersion = 2;

enum class LockOutputRule {
    /// While Lock Output is on, `lockedParameters` come out of a load as they went in: a preset browser must
    /// not undo the levels that a session was set up with.
    Honour,
    /// The file's values count: for the default setting of a new instance, and for whoever names one file to
    /// be used, as on a command line, where no earlier setting is there to be kept.
    Ignore,
};

/// Loads a preset file of this or an older format. False if no format fits or the file ends early; a file
/// that is none of ours changes nothing, one that ends early changes what it held.
bool loadPresetFile(VantaParameters& parameters, const std::filesystem::path& path, LockOutputRule rule);

/// The same of a preset in memory.
bool loadPreset(VantaParameters& parameters, std::span<const std::byte> record, LockOutputRule rule);

/// Saves all parameters. False if the file cannot be written; an old file then stands as it was.
bool savePresetFile(VantaParameters& parameters, const std::filesystem::path& path);

}  // namespace vanta
