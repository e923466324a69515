#pragma once

#include <string>

#include "foundation/binary_data.hpp"
#include "plugin/base/generic_parameter_owner.hpp"

namespace vanta {

/// Takes the values of one preset file into some target. A preset file is a record of one float per
/// parameter: a tag of four characters, the version of the parameter list, the count, the values. All numbers
/// are 4 bytes and little-endian. A value is what a parameter's `value()` returns.
class PresetLoader {
public:
    /// `owner` gets a change block around the load; null if the load changes no parameter.
    PresetLoader(GenericParameterOwner* owner, std::string magic);
    PresetLoader(const PresetLoader&) = delete;
    PresetLoader& operator=(const PresetLoader&) = delete;
    virtual ~PresetLoader() = default;

    /// Called after the last value, also of a file that ends early.
    virtual void finish(int version);
    /// How many values the loader can take.
    virtual int parameterCount() const = 0;
    /// The tag to expect.
    virtual std::string magic(int version) const;
    /// Called before the first value.
    virtual void prepare(int version);
    virtual bool acceptVersion(int version);
    /// A position that the file does not hold, or that holds no finite number.
    virtual void setDefault(int position) = 0;
    virtual void setValue(int position, float value) = 0;

    GenericParameterOwner* owner() const { return owner_; }

private:
    GenericParameterOwner* owner_;
    std::string magic_;
};

inline constexpr int kAnyVersion = -1;

/// Reads a preset. A wrong tag or version changes nothing. What a longer file holds beyond the loader's count
/// is not read; what a shorter one lacks is set to its default. A file that is cut off sets what it holds up
/// to the cut, and the result is false. `requiredVersion`: the only one to take, or kAnyVersion to
/// ask the loader. `alternativeMagic`: the tag to expect in place of the loader's, if not empty.
bool readPreset(PresetLoader& loader, BinaryDataReader& reader, int requiredVersion = kAnyVersion,
                const std::string& alternativeMagic = {});

}  // namespace vanta
