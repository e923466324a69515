#pragma once

#include <functional>
#include <memory>
#include <mutex>

#include "plugin/model/plugin_statics.hpp"

namespace vanta {

/// An instance's share in what all instances of the process have in common: the first one makes it, the last
/// one drops it.
class SharedStatics {
public:
    using Make = std::function<std::unique_ptr<PluginStatics>()>;

    /// Counts the instance unless `make`, which is only called for the first one, throws.
    explicit SharedStatics(const Make& make);
    ~SharedStatics();
    SharedStatics(const SharedStatics&) = delete;
    SharedStatics& operator=(const SharedStatics&) = delete;

    PluginStatics& operator*() const { return statics_; }
    PluginStatics* operator->() const { return &statics_; }

    /// Held while an instance is built or goes.
    static std::unique_lock<std::recursive_mutex> constructionLock();
    static int instanceCount();

private:
    PluginStatics& statics_;
};

}  // namespace vanta
