#pragma once

#include <algorithm>
#include <span>
#include <string>
#include <utility>

#include "plugin/parameters/abstract_plugin_parameter.hpp"
#include "plugin/presets/preset_loader.hpp"

namespace vanta {

/// Takes values into an array. No parameter changes; those of the owner only give the defaults.
class PresetPreloader final : public PresetLoader {
public:
    /// `values` holds one value for each of `parameters`, and outlives the loader.
    PresetPreloader(const GenericParameterOwner& parameters, std::string magic, std::span<float> values)
        : PresetLoader(nullptr, std::move(magic)), parameters_(parameters), values_(values) {}

    int parameterCount() const override {
        return std::min(parameters_.parameterCount(), static_cast<int>(values_.size()));
    }
    void setDefault(int position) override {
        setValue(position, parameters_.parameterAt(position)->defaultValue());
    }
    void setValue(int position, float value) override { values_[static_cast<std::size_t>(position)] = value; }

private:
    const GenericParameterOwner& parameters_;
    std::span<float> values_;
};

}  // namespace vanta
