#pragma once

#include <string>

#include "plugin/model/interface_defaults.hpp"
#include "plugin/model/plugin_statics.hpp"
#include "plugin/model/preset_state.hpp"
#include "plugin/presets/parameter_file_list.hpp"

namespace vanta {

/// Loads and saves the presets of one instance.
class PluginPresets {
public:
    /// The instance, as far as presets concern it.
    class Client {
    public:
        virtual ~Client() = default;
        /// Sets the parameters to the values of a preset file, in whatever formats the product knows.
        virtual bool loadFile(const std::string& path) = 0;
        /// The values, as they now are in the open block of changes, have nothing to do with those before.
        virtual void valuesReplaced() = 0;
        /// Another preset is current. `hostKnows`: the host has set it itself.
        virtual void presetReplaced(bool hostKnows) = 0;
    };

    /// `all` lists every parameter as a preset file holds them, in `version`.
    PluginPresets(Client& client, ParameterFileList all, int version, InterfaceDefaults interfaceDefaults,
                  PresetState& current, PluginStatics& statics);

    /// Leaves the interface alone. False if the file holds no preset of ours; then the current one stays. If
    /// memory runs out all values are as they were.
    bool load(const PresetEntry& entry);
    /// Loads the preset of this name that the product brought along, if there is one. The interface is set
    /// up as its defaults say.
    void loadInitial(const std::string& name);
    bool isInitialLoad() const { return initialLoad_; }
    /// `first` other than kWholeFile changes `count` values of the file in place.
    bool save(const PresetEntry& entry, int first, int count);
    /// Names the preset as a host restores it; see GenericPlugin::setPresetName.
    void setName(const std::string& name, int length);
    /// Loads what a MIDI program change asks for, if the user allows it and there is such a preset.
    void loadProgram(int bank, int program);

    const ParameterFileList& all() const { return all_; }
    const InterfaceDefaults& interfaceDefaults() const { return interfaceDefaults_; }

private:
    bool loadValues(const std::string& path);

    Client& client_;
    ParameterFileList all_;
    int version_;
    InterfaceDefaults interfaceDefaults_;
    PresetState& current_;
    PluginStatics& statics_;
    bool initialLoad_ = false;
};

}  // namespace vanta
