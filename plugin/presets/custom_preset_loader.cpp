#include "plugin/presets/custom_preset_loader.hpp"

#include <utility>

#include "plugin/presets/preset_map.hpp"

namespace vanta {

CustomPresetLoader::CustomPresetLoader(GenericParameterOwner& owner, std::string magic, int currentVersion)
    : PresetLoader(&owner, std::move(magic)), currentVersion_(currentVersion) {}

bool CustomPresetLoader::acceptVersion(int version) {
    if (currentVersion_ == kNoMapping) return true;
    if (version < 1 || version > currentVersion_) return false;
    if (version == preparedVersion_) return true;
    targets.clear();
    addedParameters.clear();
    preparedVersion_ = -1;
    if (version == currentVersion_) {
        targetAll();
    } else if (!targetByMap(version)) {
        return false;
    }
    preparedVersion_ = version;
    return true;
}

void CustomPresetLoader::targetAll() {
    for (int i = 0; i < changed().parameterCount(); ++i) targets.push_back({changed().parameterAt(i)});
}

bool CustomPresetLoader::targetByMap(int version) {
    BinaryResourceReader reader(presetMapName(magic(version), version));
    const auto map = readPresetMap(reader);
    if (!map || !map->fits(changed().parameterCount())) return false;
    for (const int index : map->oldToNew) {
        targets.push_back({index < 0 ? nullptr : changed().parameterAt(index)});
    }
    for (const int index : map->added) addedParameters.push_back(changed().parameterAt(index));
    return true;
}

void CustomPresetLoader::prepare(int /*version*/) {
    for (PresetTarget& target : targets) target.loaded = false;
    for (AbstractPluginParameter* parameter : addedParameters)
        parameter->setValue(parameter->defaultValue(), 0);
}

void CustomPresetLoader::setDefault(int position) {
    const PresetTarget& target = targets[static_cast<std::size_t>(position)];
    if (target.parameter) target.parameter->setValue(target.parameter->defaultValue(), 0);
}

void CustomPresetLoader::setValue(int position, float value) {
    PresetTarget& target = targets[static_cast<std::size_t>(position)];
    if (target.parameter) target.parameter->setValue(value, 0);
    if (target.variable) *target.variable = value;
    target.value = value;
    target.loaded = true;
}

}  // namespace vanta
