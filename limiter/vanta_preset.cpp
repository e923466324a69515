#include "limiter/vanta_preset.hpp"

#include <array>
#include <string>

#include "foundation/binary_data.hpp"
#include "limiter/preset_maps.hpp"
#include "limiter/v1_preset_loader.hpp"
#include "plugin/presets/custom_preset_loader.hpp"
#include "plugin/presets/parameter_file_list.hpp"

namespace vanta {
namespace {

bool loadAnyVersion(VantaParameters& parameters, const std::filesystem::path& path) {
    {
        BinaryFileReader reader(path);
        CustomPresetLoader loader(parameters.owner(), std::string(kPresetTag), kPresetVersion);
        if (readPreset(loader, reader)) return true;
    }
    BinaryFileReader reader(path);
    V1PresetLoader loader(parameters);
    return readPreset(loader, reader, V1PresetLoader::kVersion, std::string(V1PresetLoader::kTag));
}

}  // namespace

bool loadPresetFile(VantaParameters& parameters, const std::filesystem::path& path, LockOutputRule rule) {
    registerPresetMaps();
    const bool keep = rule == LockOutputRule::Honour && parameters.lockOutput.mapped();
    const auto locked = parameters.lockedParameters();
    std::array<float, std::tuple_size_v<decltype(parameters.lockedParameters())>> kept{};
    for (std::size_t i = 0; i < locked.size(); ++i) kept[i] = locked[i]->value();

    ChangeBlock block(parameters.owner());
    const bool loaded = loadAnyVersion(parameters, path);
    if (keep) {
        for (std::size_t i = 0; i < locked.size(); ++i) locked[i]->setValue(kept[i], 0);
    }
    return loaded;
}

bool savePresetFile(VantaParameters& parameters, const std::filesystem::path& path) {
    return writeFile(ParameterFileList(parameters.owner(), std::string(kPresetTag)), path, kPresetVersion);
}

}  // namespace vanta
