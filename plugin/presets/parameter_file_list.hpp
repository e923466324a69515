#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "foundation/binary_data.hpp"
#include "plugin/parameters/abstract_plugin_parameter.hpp"

namespace vanta {

/// A fixed list of parameters that are stored together, as one preset file.
class ParameterFileList {
public:
    ParameterFileList(GenericParameterOwner& owner, std::string magic,
                      std::vector<AbstractPluginParameter*> parameters);
    /// All parameters of the owner.
    ParameterFileList(GenericParameterOwner& owner, std::string magic);

    GenericParameterOwner& owner() const { return *owner_; }
    const std::string& magic() const { return magic_; }
    const std::vector<AbstractPluginParameter*>& parameters() const { return parameters_; }
    int size() const { return static_cast<int>(parameters_.size()); }

private:
    GenericParameterOwner* owner_;
    std::string magic_;
    std::vector<AbstractPluginParameter*> parameters_;
};

/// The values of the list's parameters, and the way back.
std::vector<float> valuesOf(const ParameterFileList& list);
void setValues(const ParameterFileList& list, const std::vector<float>& values);

inline constexpr int kWholeFile = -1;

/// Writes the list's values. With `first` other than kWholeFile only `count` values from position `first` on
/// are changed in place; the writer's stream must then be readable as well, and hold tag, version and count
/// of this list, else nothing is written. False also if the stream has failed.
bool writeValues(const ParameterFileList& list, BinaryDataWriter& writer, int version, int first = kWholeFile,
                 int count = 0);

/// The same to a file. One that is not exactly of this list and version is not touched in place but written
/// whole, as with kWholeFile: beside, and then renamed, so that a failure leaves the old file.
bool writeFile(const ParameterFileList& list, const std::filesystem::path& path, int version,
               int first = kWholeFile, int count = 0);

/// Reads a file of this list and version into the parameters; see readPreset.
bool loadCollection(const ParameterFileList& list, const std::filesystem::path& path, int version);

}  // namespace vanta
