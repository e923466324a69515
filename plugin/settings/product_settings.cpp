#include "plugin/settings/product_settings.hpp"

#include "plugin/settings/registry_serializer.hpp"

namespace vanta {
namespace {

constexpr const char* kPresetFolder = "PresetFolder";
constexpr const char* kCurrentVersion = "CurrentVersion";

}  // namespace

std::filesystem::path presetFolder(const Product& product) {
    const std::filesystem::path usual = product.defaultPresetFolder();
    const std::filesystem::path set = RegistryReader(product.key()).text(kPresetFolder, {}, usual.string());
    std::error_code ignored;
    return std::filesystem::is_directory(set, ignored) ? set : usual;
}

void setPresetFolder(const Product& product, const std::filesystem::path& folder) {
    RegistryWriter(product.key()).text(kPresetFolder, folder.string(), {});
}

std::optional<std::filesystem::path> firstVersionPresetFolder(const Product& product) {
    std::string folder = RegistryReader(product.key(1)).text(kPresetFolder, {}, {});
    if (folder.empty()) return {};
    if (product.firstMajorVersion != 1) folder += " 1";
    return folder;
}

bool isNewVersion(const Product& product) {
    return RegistryReader(product.key()).text(kCurrentVersion, {}, {}) != product.version;
}

void storeVersion(const Product& product) {
    RegistryWriter(product.key()).text(kCurrentVersion, product.version, {});
}

std::string helpFileName(const Product& product) {
    return RegistryReader(product.key(), SettingsHive::Machine).text("HelpFileName", {}, {});
}

bool useProToolsShortcuts(const Product& product) {
    return RegistryReader(product.key()).boolean("UseProToolsShortcuts", true, true);
}

bool vst2DefaultToNoSideChain(const Product& product) {
    return RegistryReader(product.key()).boolean("VST2_DefaultToNoSideChain", false, false);
}

}  // namespace vanta
