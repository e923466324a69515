#include "plugin/settings/user_folders.hpp"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>

namespace vanta {
namespace {

/// Empty unless it is absolute.
std::filesystem::path pathFromEnvironment(const char* name) {
    const char* value = std::getenv(name);
    const std::filesystem::path path = value ? value : "";
    return path.is_absolute() ? path : std::filesystem::path();
}

std::filesystem::path homeOfAccount() {
    std::array<char, 4096> buffer{};
    passwd account{};
    passwd* found = nullptr;
    ::getpwuid_r(::getuid(), &account, buffer.data(), buffer.size(), &found);
    return found && found->pw_dir ? found->pw_dir : "/";
}

std::filesystem::path baseFolder(const char* name, const char* belowHome) {
    const std::filesystem::path given = pathFromEnvironment(name);
    return given.empty() ? homeFolder() / belowHome : given;
}

/// What stands between the quotes, in the shell's own notation.
std::string unquoted(std::string_view text) {
    std::string value;
    for (std::size_t i = 0; i < text.size() && text[i] != '"'; ++i) {
        if (text[i] == '\\' && i + 1 < text.size()) ++i;
        value += text[i];
    }
    return value;
}

/// A line of user-dirs.dirs is NAME="$HOME/folder" or NAME="/folder"; the last one counts.
std::filesystem::path configuredFolder(std::string_view name) {
    std::ifstream file(configurationFolder() / "user-dirs.dirs");
    const std::string lead = std::string(name) + "=\"";
    constexpr std::string_view kHome = "$HOME";
    std::filesystem::path folder;
    for (std::string line; std::getline(file, line);) {
        line.erase(0, line.find_first_not_of(" \t"));
        if (!line.starts_with(lead)) continue;
        const std::string value = unquoted(std::string_view(line).substr(lead.size()));
        if (value == kHome || value.starts_with("$HOME/")) {
            folder = homeFolder().string() + value.substr(kHome.size());
        } else if (value.starts_with('/')) {
            folder = value;
        }
    }
    return folder;
}

}  // namespace

std::filesystem::path homeFolder() {
    const std::filesystem::path home = pathFromEnvironment("HOME");
    return home.empty() ? homeOfAccount() : home;
}

std::filesystem::path configurationFolder() {
    return baseFolder("XDG_CONFIG_HOME", ".config");
}

std::vector<std::filesystem::path> machineConfigurationFolders() {
    const char* given = std::getenv("XDG_CONFIG_DIRS");
    std::string_view list = given && *given ? given : "/etc/xdg";
    std::vector<std::filesystem::path> folders;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(':'), list.size());
        const std::filesystem::path folder = list.substr(0, end);
        if (folder.is_absolute()) folders.push_back(folder);
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return folders;
}

std::filesystem::path dataFolder() {
    return baseFolder("XDG_DATA_HOME", ".local/share");
}

std::filesystem::path documentsFolder() {
    std::filesystem::path folder = pathFromEnvironment("XDG_DOCUMENTS_DIR");
    if (folder.empty()) folder = configuredFolder("XDG_DOCUMENTS_DIR");
    return folder.empty() ? homeFolder() : folder;
}

}  // namespace vanta
