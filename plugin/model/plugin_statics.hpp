#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "plugin/midi/controller_mapping.hpp"
#include "plugin/presets/preset_manager.hpp"
#include "plugin/settings/plugin_settings.hpp"
#include "plugin/settings/product.hpp"
#include "plugin/settings/shared_settings.hpp"

namespace vanta {

/// What all instances of a plug-in share in this process: made by the first, dropped with the last. As it
/// stands it neither reads nor writes anything on the disk; a product that keeps files derives from it.
///
/// Everything in it is used under `lock`, as instances live on several threads. That lock comes after
/// an interface's and before an adapter's.
class PluginStatics {
public:
    PluginStatics(Product describedProduct, int parameterCount, int extraTargetCount = 0);
    virtual ~PluginStatics() = default;
    PluginStatics(const PluginStatics&) = delete;
    PluginStatics& operator=(const PluginStatics&) = delete;

    /// Settings of a further instance.
    virtual std::unique_ptr<PluginSettings> createSettings(const InterfaceSizes& sizes);

    std::unique_lock<std::recursive_mutex> lock() { return std::unique_lock(mutex_); }
    /// Copies, as a scan may drop the entries. `mainOnly` leaves extra folders out.
    std::optional<PresetEntry> findPreset(const std::string& name, bool mainOnly);
    std::optional<PresetEntry> presetAt(int bank, int program);

    const Product product;
    SharedSettings settings;
    PresetManager presets;
    ControllerMapping controllers;
    std::filesystem::path interfaceDefaults;  ///< where these are kept; empty for nowhere
    std::filesystem::path controllerMap;      ///< likewise

private:
    std::recursive_mutex mutex_;
};

}  // namespace vanta
