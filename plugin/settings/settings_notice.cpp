#include "plugin/settings/settings_notice.hpp"

#include <cstdio>
#include <mutex>
#include <set>
#include <utility>

#include <fmt/format.h>

namespace vanta {
namespace {

struct Notices {
    std::mutex mutex;
    SettingsNotice handler;
    std::set<std::string> said;
};

Notices& notices() {
    // Never destroyed: settings may be written while other statics are torn down.
    static Notices& instance = *new Notices;
    return instance;
}

}  // namespace

void setSettingsNotice(SettingsNotice handler) {
    const std::lock_guard lock(notices().mutex);
    notices().handler = std::move(handler);
    notices().said.clear();
}

void noticeOnce(const std::string& sentence) {
    SettingsNotice handler;
    {
        const std::lock_guard lock(notices().mutex);
        if (!notices().said.insert(sentence).second) return;
        handler = notices().handler;
    }
    if (handler) {
        handler(sentence);
    } else {
        fmt::print(stderr, "vanta: {}\n", sentence);
    }
}

}  // namespace vanta
