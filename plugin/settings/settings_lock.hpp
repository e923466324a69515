#pragma once

#include <filesystem>

namespace vanta {

/// Keeps other writers of a settings file out, of this process and of others. The lock has a file of its own
/// beside the settings, as those are replaced by each write. Gives up after five seconds in which no other
/// writer got on either.
class SettingsLock {
public:
    explicit SettingsLock(const std::filesystem::path& settings);
    ~SettingsLock();
    SettingsLock(const SettingsLock&) = delete;
    SettingsLock& operator=(const SettingsLock&) = delete;

    bool held() const { return held_; }

private:
    int descriptor_ = -1;
    bool held_ = false;
};

}  // namespace vanta
