#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "plugin/settings/setting_value.hpp"

namespace vanta {

/// Whose settings: one user's, which may be written, or those of the machine, which the installer wrote.
enum class SettingsHive { User, Machine };

/// Named, typed values under key paths such as "Software\Maker\Product\2.0". Each key path is one text file,
/// `Maker/Product/2.0.conf` in the user's configuration folder, in which a value stands in the section of its
/// type. Any number of processes and instances may read and write at once: a write takes the file's lock,
/// reads it anew, changes one value and renames the result into place, so that a reader needs no lock and
/// nothing but that value changes. Comments that a user wrote there stay.
///
/// A file that cannot be understood counts as empty. The first write keeps it aside under another name. The
/// user is told of both once. Throws nothing but std::bad_alloc; not for the audio thread.
class SettingsStore {
public:
    explicit SettingsStore(const std::string& keyPath, SettingsHive hive = SettingsHive::User);

    std::optional<SettingValue> read(const std::string& name) const;
    /// False if the value is not stored: the folder or disk refuses, the name cannot be written, or this is
    /// the machine's hive. What was stored before is then unchanged. A value that is there already is not
    /// written again.
    bool write(const std::string& name, const SettingValue& value) const;

    /// The file behind the key path, there or not. For the machine's hive the first file that is there. Empty
    /// if the key path would leave the configuration folder.
    const std::filesystem::path& file() const { return file_; }

private:
    std::filesystem::path file_;
    SettingsHive hive_;
};

}  // namespace vanta
