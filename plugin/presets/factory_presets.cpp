#include "plugin/presets/factory_presets.hpp"

#include "foundation/resource.hpp"
#include "plugin/presets/setup_archive.hpp"

namespace vanta {

bool restoreFolder(const std::string& folderName, const std::filesystem::path& destination, bool overwrite) {
    const auto archive = findResource(kSetupResource);
    return archive && extractFolder(*archive, folderName, destination, overwrite);
}

bool restoreFactoryPresets(PresetManager& manager, const std::filesystem::path& applicationDataFolder,
                           bool overwrite) {
    const std::string presetFolder = manager.path;  // the scan below would change it in use
    const bool hasData = restoreFolder("ApplicationData", applicationDataFolder, overwrite);
    const bool hasPresets = !presetFolder.empty() && restoreFolder("FactoryPresets", presetFolder, overwrite);
    manager.rescan(presetFolder);
    return hasData && hasPresets;
}

}  // namespace vanta
