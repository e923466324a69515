#include "plugin/settings/settings_store.hpp"

#include <algorithm>
#include <string_view>
#include <system_error>

#include <fmt/format.h>

#include "plugin/settings/settings_file.hpp"
#include "plugin/settings/settings_lock.hpp"
#include "plugin/settings/settings_notice.hpp"
#include "plugin/settings/user_folders.hpp"

namespace vanta {
namespace {

/// Empty for a key path that would lead out of the folder it is taken below.
std::filesystem::path relativeFile(std::string_view keyPath) {
    constexpr std::string_view kTrunk = "Software\\";
    if (keyPath.starts_with(kTrunk)) keyPath.remove_prefix(kTrunk.size());
    std::filesystem::path file;
    while (true) {
        const std::size_t end = std::min(keyPath.find('\\'), keyPath.size());
        const std::string_view part = keyPath.substr(0, end);
        const bool isPlain = part.find('/') == std::string_view::npos && part != "." && part != "..";
        if (part.empty() || !isPlain) return {};
        file /= part;
        if (end == keyPath.size()) break;
        keyPath.remove_prefix(end + 1);
    }
    return file += ".conf";
}

std::filesystem::path locate(const std::string& keyPath, SettingsHive hive) {
    const std::filesystem::path relative = relativeFile(keyPath);
    if (relative.empty()) return {};
    if (hive == SettingsHive::User) return configurationFolder() / relative;
    std::error_code ignored;
    std::filesystem::path last;
    for (const std::filesystem::path& folder : machineConfigurationFolders()) {
        last = folder / relative;
        if (std::filesystem::exists(last, ignored)) break;
    }
    return last;
}

bool keepAside(const std::filesystem::path& file) {
    constexpr int kMostKept = 100;
    std::error_code error;
    for (int i = 1; i <= kMostKept; ++i) {
        const std::string aside =
            fmt::format("{}.damaged{}", file.string(), i > 1 ? fmt::format("-{}", i) : "");
        if (std::filesystem::exists(std::filesystem::symlink_status(aside, error))) continue;
        std::filesystem::rename(file, aside, error);
        if (error) return false;
        noticeOnce(fmt::format(
            "the settings file is damaged: it was renamed to {} and all settings are back at their defaults",
            aside));
        return true;
    }
    return false;
}

void noticeFault(SettingsFile::State state, const std::filesystem::path& file) {
    if (state == SettingsFile::State::Damaged) {
        noticeOnce(
            fmt::format("the settings file {} is damaged: the default settings are used", file.string()));
    }
    if (state == SettingsFile::State::Unreadable) {
        noticeOnce(
            fmt::format("the settings file {} cannot be read: the default settings are used", file.string()));
    }
}

}  // namespace

SettingsStore::SettingsStore(const std::string& keyPath, SettingsHive hive)
    : file_(locate(keyPath, hive)), hive_(hive) {}

std::optional<SettingValue> SettingsStore::read(const std::string& name) const {
    if (file_.empty()) return {};
    const SettingsFile content(file_);
    noticeFault(content.state(), file_);
    return content.get(name);
}

bool SettingsStore::write(const std::string& name, const SettingValue& value) const {
    if (file_.empty() || hive_ != SettingsHive::User || !SettingsFile::isName(name)) return false;
    if (read(name) == value) return true;
    std::error_code error;
    std::filesystem::create_directories(file_.parent_path(), error);
    const SettingsLock lock(file_);
    if (!lock.held()) return false;
    SettingsFile content(file_);
    if (content.state() == SettingsFile::State::Unreadable) return false;
    if (content.state() == SettingsFile::State::Damaged && !keepAside(file_)) return false;
    content.set(name, value);
    return content.save(file_);
}

}  // namespace vanta
