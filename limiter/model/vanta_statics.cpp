#include "limiter/model/vanta_statics.hpp"

#include <filesystem>

#include "limiter/model/vanta_product.hpp"
#include "plugin/presets/factory_presets.hpp"
#include "plugin/settings/product_settings.hpp"

namespace vanta {
namespace {

constexpr const char* kInterfaceDefaultsFile = "InterfaceDefaults.qmd";
constexpr const char* kControllerMapFile = "MidiControllerMap.qmm";

}  // namespace

VantaStatics::VantaStatics(int parameterCount) : PluginStatics(vantaProduct(), parameterCount) {
    const std::filesystem::path data = product.applicationDataFolder();
    interfaceDefaults = data / kInterfaceDefaultsFile;
    controllerMap = data / kControllerMapFile;
    settings.load();
    settings.loaded = true;
    graphics_ = readProcessGraphics(settings);
    helpFile_ = helpFileName(product);
    const bool newVersion = isNewVersion(product);
    if (newVersion) settings.showWelcomeHint = true;
    readPresets(newVersion);
    // Last, so that a start that was cut short is made up for.
    if (newVersion) storeVersion(product);
    controllers.load(controllerMap);
    controllers.changed.addHandler(this, &VantaStatics::onControllersChanged);
}

VantaStatics::~VantaStatics() {
    // A map that nobody touched is not written, so that one which could not be read stays for its owner.
    if (controllersChanged_) controllers.save(controllerMap);
}

void VantaStatics::readPresets(bool newVersion) {
    presets.rescan(presetFolder(product).string());
    if (newVersion || presets.isEmpty()) {
        restoreFactoryPresets(presets, product.applicationDataFolder(), false);
    }
    if (const auto older = firstVersionPresetFolder(product)) {
        presets.addFolder(older->string(), "V1 Preset Folder");
    }
}

std::unique_ptr<PluginSettings> VantaStatics::createSettings(const InterfaceSizes& sizes) {
    auto created = PluginStatics::createSettings(sizes);
    created->load();
    created->loaded = true;
    return created;
}

}  // namespace vanta
