#include "plugin/settings/settings_store.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <mutex>
#include <set>
#include <string_view>
#include <system_error>
#include <thread>

#include <fmt/format.h>

#include "plugin/settings/settings_file.hpp"
#include "plugin/settings/user_folders.hpp"

namespace vanta {
namespace {

/// Where notices go, and what has been told.
struct Notices {
    std::mutex mutex;
    SettingsNotice handler;
    std::set<std::string> told;
};

Notices& notices() {
    // Never destroyed: settings may be written while other statics are torn down.
    static Notices& instance = *new Notices;
    return instance;
}

void tellOnce(const std::string& sentence) {
    SettingsNotice handler;
    {
        const std::lock_guard lock(notices().mutex);
        if (!notices().told.insert(sentence).second) return;
        handler = notices().handler;
    }
    if (handler) {
        handler(sentence);
    } else {
        fmt::print(stderr, "vanta: {}\n", sentence);
    }
}

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

/// Keeps other writers out, of this process and of others. The lock has a file of its own beside the
/// settings, as those are replaced by each write.
class WriteLock {
public:
    explicit WriteLock(const std::filesystem::path& settings) {
        const std::string name = fmt::format(".{}.lock", settings.filename().string());
        descriptor = ::open((settings.parent_path() / name).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        // A process that was stopped while it wrote must not stop all others with it; a queue of writers
        // that gets on, however slowly, is waited for.
        auto patience = Clock::now() + kPatience;
        ino_t last = 0;
        while (descriptor >= 0 && !(held_ = ::flock(descriptor, LOCK_EX | LOCK_NB) == 0)) {
            const ino_t now = inodeOf(settings);
            if (now != last) patience = Clock::now() + kPatience;
            last = now;
            if (Clock::now() > patience) break;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    ~WriteLock() {
        if (descriptor >= 0) ::close(descriptor);  // gives the lock back
    }
    WriteLock(const WriteLock&) = delete;
    WriteLock& operator=(const WriteLock&) = delete;

    bool held() const { return held_; }

private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::seconds kPatience{5};

    /// Each write puts a new file in place.
    static ino_t inodeOf(const std::filesystem::path& file) {
        struct stat status {};
        return ::stat(file.c_str(), &status) == 0 ? status.st_ino : 0;
    }

    int descriptor = -1;
    bool held_ = false;
};

bool keepAside(const std::filesystem::path& file) {
    constexpr int kMostKept = 100;
    std::error_code error;
    for (int i = 1; i <= kMostKept; ++i) {
        const std::string aside =
            fmt::format("{}.damaged{}", file.string(), i > 1 ? fmt::format("-{}", i) : "");
        if (std::filesystem::exists(std::filesystem::symlink_status(aside, error))) continue;
        std::filesystem::rename(file, aside, error);
        if (error) return false;
        tellOnce(fmt::format("the damaged settings file is kept as {}; settings start anew", aside));
        return true;
    }
    return false;
}

void tellFault(SettingsFile::State state, const std::filesystem::path& file) {
    if (state == SettingsFile::State::Damaged) {
        tellOnce(fmt::format("the settings file {} is damaged; its settings are not used", file.string()));
    }
    if (state == SettingsFile::State::Unreadable) {
        tellOnce(fmt::format("the settings file {} can't be read", file.string()));
    }
}

}  // namespace

void setSettingsNotice(SettingsNotice handler) {
    const std::lock_guard lock(notices().mutex);
    notices().handler = std::move(handler);
    notices().told.clear();
}

SettingsStore::SettingsStore(const std::string& keyPath, SettingsHive settingsHive)
    : file_(locate(keyPath, settingsHive)), hive_(settingsHive) {}

std::optional<SettingValue> SettingsStore::read(const std::string& name) const {
    if (file_.empty()) return {};
    const SettingsFile content(file_);
    tellFault(content.state(), file_);
    return content.get(name);
}

bool SettingsStore::write(const std::string& name, const SettingValue& value) const {
    if (file_.empty() || hive_ != SettingsHive::User || !SettingsFile::isName(name)) return false;
    if (read(name) == value) return true;
    std::error_code error;
    std::filesystem::create_directories(file_.parent_path(), error);
    const WriteLock lock(file_);
    if (!lock.held()) return false;
    SettingsFile content(file_);
    if (content.state() == SettingsFile::State::Unreadable) return false;
    if (content.state() == SettingsFile::State::Damaged && !keepAside(file_)) return false;
    content.set(name, value);
    return content.save(file_);
}

}  // namespace vanta
