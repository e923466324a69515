#pragma once

#include <filesystem>
#include <mutex>
#include <string>
#include <utility>

namespace vanta {

/// The current preset as an interface shows it. Any thread: a host stores the name while a user browses.
class PresetState {
public:
    struct Values {
        std::string name;
        std::filesystem::path path;  ///< empty if the preset is not a file
        bool modified = false;       ///< a parameter has changed since it was loaded or saved

        bool operator==(const Values&) const = default;
    };

    Values values() const {
        const std::lock_guard lock(mutex_);
        return values_;
    }
    /// True if anything has changed.
    bool set(Values values) {
        const std::lock_guard lock(mutex_);
        std::swap(values_, values);
        return values_ != values;
    }
    std::string name() const { return values().name; }
    bool modified() const {
        const std::lock_guard lock(mutex_);
        return values_.modified;
    }
    /// True if it was not modified before.
    bool markModified() {
        const std::lock_guard lock(mutex_);
        return !std::exchange(values_.modified, true);
    }

private:
    mutable std::mutex mutex_;
    Values values_;
};

}  // namespace vanta
