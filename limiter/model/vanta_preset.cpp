#include "limiter/model/vanta_preset.hpp"

#include <string>
#include <vector>

#include "foundation/binary_data.hpp"
#include "limiter/model/preset_maps.hpp"
#include "limiter/model/v1_preset_loader.hpp"
#include "plugin/presets/custom_preset_loader.hpp"
#include "plugin/presets/parameter_file_list.hpp"

namespace vanta {
namespace {

/// `open` gives a reader at the start of the record.
template <typename Open>
bool loadAnyVersion(VantaParameters& parameters, Open open) {
    {
        auto reader = open();
        CustomPresetLoader loader(parameters.owner(), std::string(kPresetTag), kPresetVersion);
        if (readPreset(loader, reader)) return true;
    }
    auto reader = open();
    V1PresetLoader loader(parameters);
    return readPreset(loader, reader, V1PresetLoader::kVersion, std::string(V1PresetLoader::kTag));
}

template <typename Open>
bool loadByRule(VantaParameters& parameters, Open open, LockOutputRule rule) {
    registerPresetMaps();
    const bool keep = rule == LockOutputRule::Honour && parameters.lockOutput.mapped();
    const auto locked = parameters.parametersWith(&ParameterRow::keptByLockOutput);
    std::vector<float> kept;
    for (const AbstractPluginParameter* parameter : locked) kept.push_back(parameter->value());

    ChangeBlock block(parameters.owner());
    const bool loaded = loadAnyVersion(parameters, open);
    if (keep) {
        for (std::size_t i = 0; i < locked.size(); ++i) locked[i]->setValue(kept[i], 0);
    }
    return loaded;
}

}  // namespace

bool loadPresetFile(VantaParameters& parameters, const std::filesystem::path& path, LockOutputRule rule) {
    return loadByRule(
        parameters, [&] { return BinaryFileReader(path); }, rule);
}

bool loadPreset(VantaParameters& parameters, std::span<const std::byte> record, LockOutputRule rule) {
    return loadByRule(
        parameters, [&] { return BinaryMemoryReader(record); }, rule);
}

bool savePresetFile(VantaParameters& parameters, const std::filesystem::path& path) {
    return writeFile(ParameterFileList(parameters.owner(), std::string(kPresetTag)), path, kPresetVersion);
}

}  // namespace vanta
