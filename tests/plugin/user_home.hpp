#pragma once

#include <cstdlib>
#include <string>
#include <vector>

#include "plugin/settings/settings_store.hpp"
#include "tests/plugin/preset_bytes.hpp"

namespace vanta::test {

/// A user of one test's own: home, configuration, data and documents in a scratch folder, and the notices
/// that this user was given.
class UserHome {
public:
    UserHome() {
        ::setenv("HOME", folder.path().c_str(), 1);
        ::setenv("XDG_CONFIG_HOME", folder.file("config").c_str(), 1);
        ::setenv("XDG_CONFIG_DIRS", folder.file("machine").c_str(), 1);
        ::setenv("XDG_DATA_HOME", folder.file("data").c_str(), 1);
        ::setenv("XDG_DOCUMENTS_DIR", folder.file("documents").c_str(), 1);
        setSettingsNotice([this](const std::string& sentence) { notices.push_back(sentence); });
    }
    ~UserHome() { setSettingsNotice({}); }
    UserHome(const UserHome&) = delete;
    UserHome& operator=(const UserHome&) = delete;

    /// Writes a file and the folders that it needs.
    std::filesystem::path write(const std::string& name, const std::string& content) const {
        std::filesystem::create_directories(folder.file(name).parent_path());
        return folder.write(name, content);
    }

    ScratchFolder folder;
    std::vector<std::string> notices;
};

}  // namespace vanta::test
