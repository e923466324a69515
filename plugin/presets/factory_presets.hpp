#pragma once

#include <filesystem>
#include <string>

#include "plugin/presets/preset_manager.hpp"

namespace vanta {

/// The resource that holds the factory presets and other files of the product, see PresetArchive.
inline constexpr const char* kSetupResource = "WindowsSetupDocs";

/// Writes what the setup resource holds under the top-level folder `folderName` (without regard to case) to
/// `destination`, which is made if needed. With `overwrite` false a file that exists stays. Each file is
/// written whole or not at all. False if anything failed; the rest is written all the same.
bool restoreFolder(const std::string& folderName, const std::filesystem::path& destination, bool overwrite);

/// Restores the application data and the presets to `manager.path`, and reads that folder again.
bool restoreFactoryPresets(PresetManager& manager, const std::filesystem::path& applicationDataFolder,
                           bool overwrite);

}  // namespace vanta
