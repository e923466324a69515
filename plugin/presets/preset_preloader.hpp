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
    /// `array` holds one value per parameter of `described`, and outlives the loader.
    PresetPreloader(const GenericParameterOwner& described, std::string expectedTag, std::span<float> array)
        : PresetLoader(nullptr, std::move(expectedTag)), parameters_(described), values_(array) {}

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
