#pragma once

#include <cstdlib>
#include <string>
#include <vector>

#include "plugin/settings/settings_notice.hpp"
#include "tests/support/temp_folder.hpp"

namespace vanta::test {

/// A user of one test's own: home, configuration, data and documents in a folder, and the notices that this
/// user was given.
class UserHome : public TempFolder {
public:
    UserHome() {
        ::setenv("HOME", path.c_str(), 1);
        ::setenv("XDG_CONFIG_HOME", (path / "config").c_str(), 1);
        ::setenv("XDG_CONFIG_DIRS", (path / "machine").c_str(), 1);
        ::setenv("XDG_DATA_HOME", (path / "data").c_str(), 1);
        ::setenv("XDG_DOCUMENTS_DIR", (path / "documents").c_str(), 1);
        setSettingsNotice([this](const std::string& sentence) { notices.push_back(sentence); });
    }
    ~UserHome() { setSettingsNotice({}); }

    std::vector<std::string> notices;
};

}  // namespace vanta::test
