#pragma once

#include <memory>
#include <string>

#include "limiter/parameters/vanta_parameters.hpp"
#include "plugin/model/generic_plugin.hpp"

namespace vanta {

/// The limiter as its user and its host see it.
class VantaPlugin final : public GenericPlugin, public VantaParameters {
public:
    /// Of `category`: a plug-in that shapes dynamics.
    static constexpr int kDynamicsCategory = 4;

    explicit VantaPlugin(ChannelLayout layout);

    int category() const override { return kDynamicsCategory; }
    bool hasPageTable() const override { return true; }
    std::string presetMagic() const override;
    int presetVersion() const override;
    void updateLatency() override;

protected:
    std::unique_ptr<PluginStatics> createStatics() override;
    InterfaceSizes interfaceSizes() const override;
    bool loadFile(const std::string& path) override;
    void parameterHook(int index) override;
};

}  // namespace vanta
