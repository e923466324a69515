#pragma once

#include <glib.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "plugin/settings/setting_value.hpp"

namespace vanta {

/// The content of one settings file. Each type of value has a section of its own.
class SettingsFile {
public:
    enum class State { Missing, Sound, Damaged, Unreadable };

    /// Reads the file. One that is not sound reads as empty.
    explicit SettingsFile(const std::filesystem::path& path);

    State state() const { return state_; }
    std::optional<SettingValue> get(const std::string& name) const;
    /// Takes the place of a value of this name, whatever its type.
    void set(const std::string& name, const SettingValue& value);
    /// Writes the file whole or not at all.
    bool save(const std::filesystem::path& path) const;

    /// Whether a value can have this name.
    static bool isName(const std::string& name);

private:
    struct Release {
        void operator()(GKeyFile* file) const { g_key_file_unref(file); }
    };

    State parse(const std::string& content);
    void drop(const char* group, const std::string& name);
    std::optional<std::string> string(const char* group, const std::string& name) const;

    std::unique_ptr<GKeyFile, Release> values_;
    State state_;
};

}  // namespace vanta
