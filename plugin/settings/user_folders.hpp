#pragma once

#include <filesystem>
#include <vector>

namespace vanta {

// The base folders of the XDG Base Directory Specification 0.8. The environment is asked anew each time, and
// a relative path in it is ignored, as that standard wants. None of the folders need exist.

std::filesystem::path homeFolder();
/// XDG_CONFIG_HOME
std::filesystem::path configurationFolder();
/// XDG_CONFIG_DIRS, the most important first.
std::vector<std::filesystem::path> machineConfigurationFolders();
/// XDG_DATA_HOME
std::filesystem::path dataFolder();
/// XDG_DOCUMENTS_DIR of the environment, else of `user-dirs.dirs`, else the home folder.
std::filesystem::path documentsFolder();

}  // namespace vanta
