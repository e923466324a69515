#pragma once

#include <atomic>
#include <chrono>
#include <thread>

#include "foundation/realtime.hpp"

namespace vanta {

/// Keeps blocks out while the main thread rebuilds what they use. Whether a server holds its clients still
/// when it changes the sample rate differs from server to server; with this nobody needs to know.
class RenderGate {
public:
    /// Audio thread. True: `leave` must follow. False: the main thread is at work.
    VANTA_REALTIME bool enter() {
        isInside_.store(true);
        if (!isClosed_.load()) return true;
        isInside_.store(false);
        return false;
    }
    VANTA_REALTIME void leave() { isInside_.store(false); }

    /// Main thread. When it returns no block is inside, and none enters until `open`.
    void close() {
        isClosed_.store(true);
        while (isInside_.load()) std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    void open() { isClosed_.store(false); }

private:
    // Each side writes its own mark before it reads the other's, in one order for all threads.
    std::atomic<bool> isInside_{false};
    std::atomic<bool> isClosed_{false};
};

}  // namespace vanta
