#pragma once

#include "app/window/transport.hpp"
#include "host/common/hosted_plugin.hpp"

namespace vanta {

/// What plays through the limiter that a window shows: a file, or the clients of a JACK server. The main
/// thread.
class AppEngine {
public:
    virtual ~AppEngine() = default;

    virtual HostedPlugin& plugin() = 0;
    /// Sound runs from here on. The result says from where to where.
    virtual std::string start() = 0;
    /// A hundred times a second, less often while the transport is paused.
    virtual void pump() = 0;

    /// Nothing sounds any more, and the window is to close.
    virtual bool hasEnded() const { return false; }

    /// Of a file; null where there is none.
    virtual Transport* transport() { return nullptr; }
};

}  // namespace vanta
