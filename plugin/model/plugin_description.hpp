#pragma once

#include <span>
#include <string>

#include "plugin/base/generic_plugin_base.hpp"
#include "plugin/settings/plugin_settings.hpp"

namespace vanta {

/// What a kind of plug-in says of itself. A product overrides what is different for it.
class PluginDescription : public GenericPluginBase {
public:
    using GenericPluginBase::GenericPluginBase;

    virtual bool canResize() const { return interfaceSizes().resizable; }
    virtual int category() const { return processingMode == 1 ? 0 : 1; }
    /// Fills `out` with the curve of a display. False: there is no such curve.
    virtual bool curveData(int /*kind*/, std::span<const float> /*values*/, std::span<float> /*out*/) const {
        return false;
    }
    /// The preset that a new instance starts with.
    virtual std::string defaultPresetName() const {
        return processingMode == 1 ? "Default Setting" : "Default Sound";
    }
    /// Four characters.
    virtual std::string presetMagic() const = 0;
    virtual int presetVersion() const { return 1; }
    virtual std::string presetExtension() const { return ".qmp"; }
    /// Of a side panel, along an axis; 0 if there is no such panel.
    virtual int panelExtent(int /*panel*/, int /*axis*/) const { return 0; }
    virtual bool hasPageTable() const { return false; }

protected:
    virtual InterfaceSizes interfaceSizes() const { return {}; }
};

}  // namespace vanta
