#include "plugin/model/plugin_presets.hpp"

#include <utility>

namespace vanta {

PluginPresets::PluginPresets(Client& client, ParameterFileList all, int version,
                             InterfaceDefaults interfaceDefaults, PresetState& current,
                             PluginStatics& statics)
    : client_(client),
      all_(std::move(all)),
      version_(version),
      interfaceDefaults_(std::move(interfaceDefaults)),
      current_(current),
      statics_(statics) {}

bool PluginPresets::load(const PresetEntry& entry) {
    // A copy, as a scan may drop the entry while its file is read.
    PresetState::Values loaded{entry.name, entry.path, false};
    if (!loadValues(loaded.path.string())) return false;
    current_.set(std::move(loaded));
    client_.presetReplaced(false);
    return true;
}

bool PluginPresets::loadValues(const std::string& path) {
    const ChangeBlock block(all_.owner());
    const std::vector<float> before = valuesOf(all_);
    const std::vector<float> interface = interfaceDefaults_.values();
    try {
        const bool loaded = client_.loadFile(path);
        if (initialLoad_) {
            interfaceDefaults_.load();
        } else {
            interfaceDefaults_.setValues(interface);
        }
        client_.valuesReplaced();
        return loaded;
    } catch (...) {
        setValues(all_, before);
        throw;
    }
}

void PluginPresets::loadInitial(const std::string& name) {
    const auto entry = statics_.findPreset(name, true);
    if (!entry) return;
    initialLoad_ = true;
    load(*entry);
    initialLoad_ = false;
}

bool PluginPresets::save(const PresetEntry& entry, int first, int count) {
    PresetState::Values saved{entry.name, entry.path, false};
    if (!writeFile(all_, saved.path, version_, first, count)) return false;
    if (const auto held = statics_.lock(); !statics_.presets.path.empty()) {
        const std::string root = statics_.presets.path;
        statics_.presets.rescan(root);
    }
    if (first != kWholeFile) saved.modified = current_.modified();
    current_.set(std::move(saved));
    client_.presetReplaced(false);
    return true;
}

void PluginPresets::setName(const std::string& name, int length) {
    const auto compared = length < 0 ? std::string::npos : static_cast<std::size_t>(length);
    PresetState::Values values = current_.values();
    if (values.name.compare(0, compared, name, 0, compared) == 0) return;
    const auto entry = statics_.findPreset(name, false);
    values.name = name;
    values.path = entry ? entry->path : std::string();
    current_.set(std::move(values));
    client_.presetReplaced(true);
}

void PluginPresets::loadProgram(int bank, int program) {
    {
        const auto held = statics_.lock();
        if (!statics_.settings.enableMidiProgramChanges) return;
    }
    if (const auto entry = statics_.presetAt(bank, program)) load(*entry);
}

}  // namespace vanta
