#pragma once

#include <string>
#include <vector>

#include "plugin/parameters/abstract_plugin_parameter.hpp"
#include "plugin/presets/preset_loader.hpp"

namespace vanta {

/// Where one value of a file goes.
struct PresetTarget {
    AbstractPluginParameter* parameter = nullptr;  ///< null: to no parameter
    float* variable = nullptr;                     ///< null: to no variable
    float value = 0.0f;                            ///< as it was read
    bool loaded = false;                           ///< the file held a value
};

/// Takes whole presets of the current version, and older ones by their preset maps.
class CustomPresetLoader : public PresetLoader {
public:
    /// Takes part in no mapping; `targets` is built by a derived class.
    static constexpr int kNoMapping = -1;

    /// `currentVersion` is the one that this build writes.
    CustomPresetLoader(GenericParameterOwner& owner, std::string magic, int currentVersion);

    int parameterCount() const override { return static_cast<int>(targets.size()); }
    /// Sets what the file's version lacks to its default.
    void prepare(int version) override;
    bool acceptVersion(int version) override;
    void setDefault(int position) override;
    void setValue(int position, float value) override;

protected:
    GenericParameterOwner& changed() const { return *owner(); }

    std::vector<PresetTarget> targets;                      ///< one per value of the file
    std::vector<AbstractPluginParameter*> addedParameters;  ///< those that the file's version does not hold

private:
    void targetAll();
    bool targetByMap(int version);

    int currentVersion_;
    int preparedVersion_ = -1;  ///< the version that `targets` is for
};

}  // namespace vanta
