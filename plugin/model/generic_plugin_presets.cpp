#include <algorithm>
#include <utility>

#include "plugin/model/generic_plugin.hpp"
#include "plugin/parameters/abstract_plugin_parameter.hpp"
#include "plugin/presets/collection_preset_loader.hpp"

namespace vanta {

bool GenericPlugin::loadFile(const std::string& path) {
    return loadCollection(*presetList, path, presetVersion());
}

bool GenericPlugin::loadPreset(const PresetEntry& entry) {
    // A scan may drop the entry while its file is read.
    const PresetState::Values loaded{entry.name, entry.path, false};
    bool ok = false;
    {
        const ChangeBlock block(*this);
        const std::vector<float> kept = interfaceValues();
        ok = loadFile(loaded.path.string());
        if (!initialLoad) {
            keepInterface(kept);
        } else if (interfaceList->size() > 0 && !statics_->interfaceDefaults.empty()) {
            loadCollection(*interfaceList, statics_->interfaceDefaults, presetVersion());
        }
        presetLoaded.store(true);
    }
    if (ok) presetReplaced(loaded);
    return ok;
}

std::vector<float> GenericPlugin::interfaceValues() const {
    std::vector<float> values;
    for (const AbstractPluginParameter* parameter : interfaceList->parameters()) {
        values.push_back(parameter->value());
    }
    return values;
}

void GenericPlugin::keepInterface(const std::vector<float>& values) {
    const auto& list = interfaceList->parameters();
    for (std::size_t i = 0; i < values.size(); ++i) list[i]->setValue(values[i], 0);
}

void GenericPlugin::loadDefaultPreset() {
    const auto entry = statics_->findPreset(defaultPresetName(), true);
    if (!entry) return;
    initialLoad = true;
    loadPreset(*entry);
    initialLoad = false;
}

bool GenericPlugin::savePreset(const PresetEntry& entry, int first, int count) {
    PresetState::Values saved{entry.name, entry.path, false};
    if (!writeFile(*presetList, saved.path, presetVersion(), first, count)) return false;
    if (const auto held = statics_->lock(); !statics_->presets.path.empty()) {
        const std::string root = statics_->presets.path;
        statics_->presets.rescan(root);
    }
    if (first != kWholeFile) saved.modified = presetState_.modified();
    presetReplaced(std::move(saved));
    return true;
}

void GenericPlugin::presetReplaced(PresetState::Values values) {
    presetState_.set(std::move(values));
    tellAdapter(ModelEventQueue::PresetName, 0);
    notifyListener(PresetChanged, 0);
}

void GenericPlugin::setPresetName(const std::string& name, int length) {
    const auto compared = length < 0 ? std::string::npos : static_cast<std::size_t>(length);
    PresetState::Values values = presetState_.values();
    if (values.name.compare(0, compared, name, 0, compared) == 0) return;
    const auto entry = statics_->findPreset(name, false);
    values.name = name;
    values.path = entry ? entry->path : std::string();
    presetState_.set(std::move(values));
    // The host knows; an open interface does not.
    notifyListener(PresetChanged, 0);
}

void GenericPlugin::markModified() {
    if (presetState_.markModified()) notifyListener(PresetChanged, 0);
}

void GenericPlugin::programRequested(int bank, int program) {
    {
        const auto held = statics_->lock();
        if (!statics_->settings.enableMidiProgramChanges) return;
    }
    if (const auto entry = statics_->presetAt(bank, program)) loadPreset(*entry);
}

void GenericPlugin::storeInterfaceDefault(int parameterIndex) {
    const auto& list = interfaceList->parameters();
    const auto found = std::find(list.begin(), list.end(), parameterAt(parameterIndex));
    if (found == list.end() || statics_->interfaceDefaults.empty()) return;
    std::error_code error;
    std::filesystem::create_directories(statics_->interfaceDefaults.parent_path(), error);
    const auto position = static_cast<int>(found - list.begin());
    // Nobody is told of a failure: the value is in force, only the next instance starts with another.
    writeFile(*interfaceList, statics_->interfaceDefaults, presetVersion(), position, 1);
}

}  // namespace vanta
