#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "plugin/settings/product.hpp"

namespace vanta {

// Single settings of a product that belong to no settings object.

/// The user's preset folder; the default one if none is set or that is no longer a directory.
std::filesystem::path presetFolder(const Product& product);
void setPresetFolder(const Product& product, const std::filesystem::path& folder);

/// The preset folder that the first major version was set to, if it was.
std::optional<std::filesystem::path> firstVersionPresetFolder(const Product& product);

/// Whether another version, or none, ran last.
bool isNewVersion(const Product& product);
/// This version is the one that ran last from now on.
void storeVersion(const Product& product);

/// The help file that the installer wrote down for the machine, or an empty text.
std::string helpFileName(const Product& product);

bool useProToolsShortcuts(const Product& product);
bool vst2DefaultToNoSideChain(const Product& product);

}  // namespace vanta
