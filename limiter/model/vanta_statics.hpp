#pragma once

#include <memory>
#include <string>

#include "plugin/model/plugin_statics.hpp"

namespace vanta {

/// What the limiters of a process share, as the user's folders hold it: settings, presets and the controller
/// map are read at the start of the first instance, and the factory presets restored where there are none
/// or the program is another than the last time.
class VantaStatics final : public PluginStatics {
public:
    explicit VantaStatics(int parameterCount);
    /// Stores the controller map, if it has changed.
    ~VantaStatics() override;

    std::unique_ptr<PluginSettings> createSettings(const InterfaceSizes& sizes) override;

    /// Read once: what the whole process draws with.
    const ProcessGraphics& graphics() const { return graphics_; }
    /// Where the installer put the manual; empty if it did not say.
    const std::string& helpFile() const { return helpFile_; }

private:
    void readPresets(bool newVersion);
    void onControllersChanged(void*) { controllersChanged_ = true; }

    ProcessGraphics graphics_{};
    std::string helpFile_;
    bool controllersChanged_ = false;
};

}  // namespace vanta
