#include "plugin/model/plugin_statics.hpp"

#include <utility>

namespace vanta {
namespace {

std::optional<PresetEntry> copyOf(const PresetEntry* entry) {
    return entry ? std::optional(*entry) : std::nullopt;
}

}  // namespace

PluginStatics::PluginStatics(Product describedProduct, int parameterCount, int extraTargetCount)
    : product(std::move(describedProduct)),
      settings(product.key()),
      controllers(parameterCount, extraTargetCount) {}

std::unique_ptr<PluginSettings> PluginStatics::createSettings(const InterfaceSizes& sizes) {
    return std::make_unique<PluginSettings>(product.key(), sizes);
}

std::optional<PresetEntry> PluginStatics::findPreset(const std::string& name, bool mainOnly) {
    const auto held = lock();
    return copyOf(presets.find(name, mainOnly));
}

std::optional<PresetEntry> PluginStatics::presetAt(int bank, int program) {
    const auto held = lock();
    return copyOf(presets.entryAt(bank, program));
}

}  // namespace vanta
