#pragma once

#include <filesystem>
#include <vector>

#include "plugin/presets/parameter_file_list.hpp"

namespace vanta {

/// The parameters that are a user's preferences for the interface, and the file from which new
/// instances take them. Presets leave them alone.
class InterfaceDefaults {
public:
    /// `file` is empty where nothing is to be kept.
    InterfaceDefaults(ParameterFileList list, std::filesystem::path file, int version);

    std::vector<float> values() const { return valuesOf(list_); }
    void setValues(const std::vector<float>& values) { vanta::setValues(list_, values); }
    /// Sets the parameters to what the file holds; without a file they stay as they are.
    void load();
    /// Keeps the present value of a parameter for new instances, if it belongs to the interface.
    void store(const AbstractPluginParameter& parameter) const;

private:
    ParameterFileList list_;
    std::filesystem::path file_;
    int version_;
};

}  // namespace vanta
