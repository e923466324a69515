#include "plugin/presets/preset_scan.hpp"

#include <sys/stat.h>

namespace vanta {

std::optional<PresetScan::Directory> PresetScan::identify(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) return {};
    return Directory(status.st_dev, status.st_ino);
}

bool PresetScan::enter(const std::string& path) {
    const auto directory = identify(path);
    return directory && visited_.insert(*directory).second;
}

bool PresetScan::hasEntered(const std::string& path) const {
    const auto directory = identify(path);
    return directory && visited_.contains(*directory);
}

}  // namespace vanta
