#pragma once

#include <string>
#include <utility>
#include <vector>

#include "plugin/parameters/abstract_plugin_parameter.hpp"
#include "plugin/presets/preset_loader.hpp"

namespace vanta {

/// Takes values into a list of parameters, position by position.
class CollectionPresetLoader final : public PresetLoader {
public:
    CollectionPresetLoader(GenericParameterOwner& owner, std::string magic,
                           std::vector<AbstractPluginParameter*> parameters)
        : PresetLoader(&owner, std::move(magic)), parameters_(std::move(parameters)) {}

    int parameterCount() const override { return static_cast<int>(parameters_.size()); }
    void setDefault(int position) override { setValue(position, at(position).defaultValue()); }
    void setValue(int position, float value) override { at(position).setValue(value, 0); }

private:
    AbstractPluginParameter& at(int position) const {
        return *parameters_[static_cast<std::size_t>(position)];
    }

    std::vector<AbstractPluginParameter*> parameters_;
};

}  // namespace vanta
