#include "limiter/vanta_statics.hpp"

#include <filesystem>

#include "limiter/vanta_product.hpp"
#include "plugin/presets/factory_presets.hpp"
#include "plugin/settings/registry_serializer.hpp"

namespace vanta {
namespace {

constexpr const char* kInterfaceDefaultsFile = "InterfaceDefaults.qmd";
constexpr const char* kControllerMapFile = "MidiControllerMap.qmm";

/// The folder that the user has chosen, as long as it is there, else `usual`.
std::string presetFolder(const std::string& key, const std::string& usual) {
    RegistryReader reader(key);
    const std::string chosen = reader.text("PresetFolder", {}, usual);
    std::error_code error;
    return chosen == usual || std::filesystem::is_directory(chosen, error) ? chosen : usual;
}

}  // namespace

VantaStatics::VantaStatics(int parameterCount) : PluginStatics(vantaProduct(), parameterCount) {
    const std::filesystem::path data = product.applicationDataFolder();
    interfaceDefaults = data / kInterfaceDefaultsFile;
    controllerMap = data / kControllerMapFile;
    settings.load();
    settings.loaded = true;
    graphics_ = readProcessGraphics(settings);
    helpFile_ = RegistryReader(product.key(), SettingsHive::Machine).text("HelpFileName", {}, {});
    noteVersion();
    readPresets();
    controllers.load(controllerMap);
    controllers.changed.addHandler(this, &VantaStatics::onControllersChanged);
}

VantaStatics::~VantaStatics() {
    // A map that nobody touched is not written, so that one which could not be read stays for its owner.
    if (controllersChanged) controllers.save(controllerMap);
}

void VantaStatics::noteVersion() {
    const std::string last = RegistryReader(product.key()).text("CurrentVersion", {}, {});
    newVersion = last != product.version;
    if (!newVersion) return;
    settings.showWelcomeHint = true;
    RegistryWriter(product.key()).text("CurrentVersion", product.version, {});
}

void VantaStatics::readPresets() {
    presets.rescan(presetFolder(product.key(), product.defaultPresetFolder().string()));
    if (newVersion || presets.isEmpty()) {
        restoreFactoryPresets(presets, product.applicationDataFolder(), false);
    }
    const std::string older =
        RegistryReader(product.key(product.firstMajorVersion)).text("PresetFolder", {}, {});
    if (!older.empty()) presets.addFolder(older, "V1 Preset Folder");
}

std::unique_ptr<PluginSettings> VantaStatics::createSettings(const InterfaceSizes& sizes) {
    auto created = PluginStatics::createSettings(sizes);
    created->load();
    created->loaded = true;
    return created;
}

}  // namespace vanta
