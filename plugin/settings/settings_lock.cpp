#include "plugin/settings/settings_lock.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>

#include <fmt/format.h>

namespace vanta {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience{5};
constexpr std::chrono::milliseconds kPoll{1};

/// Each write puts a new file in place, so this tells whether writers get on.
ino_t inodeOf(const std::filesystem::path& file) {
    struct stat status {};
    return ::stat(file.c_str(), &status) == 0 ? status.st_ino : 0;
}

}  // namespace

SettingsLock::SettingsLock(const std::filesystem::path& settings) {
    const std::string name = fmt::format(".{}.lock", settings.filename().string());
    descriptor_ = ::open((settings.parent_path() / name).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    // A process that was stopped while it wrote must not stop all others with it; a queue of writers that
    // gets on, however slowly, is waited for.
    auto patience = Clock::now() + kPatience;
    ino_t last = 0;
    while (descriptor_ >= 0 && !(held_ = ::flock(descriptor_, LOCK_EX | LOCK_NB) == 0)) {
        const ino_t now = inodeOf(settings);
        if (now != last) patience = Clock::now() + kPatience;
        last = now;
        if (Clock::now() > patience) break;
        std::this_thread::sleep_for(kPoll);
    }
}

SettingsLock::~SettingsLock() {
    if (descriptor_ >= 0) ::close(descriptor_);  // gives the lock back
}

}  // namespace vanta
