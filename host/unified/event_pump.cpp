#include "host/unified/event_pump.hpp"

#include <algorithm>
#include <chrono>

#include "host/unified/unified_plugin_adapter.hpp"

namespace vanta {
namespace {

/// Soon enough for a host to record what a controller does.
constexpr std::chrono::milliseconds kInterval{5};

}  // namespace

EventPump& EventPump::instance() {
    static EventPump pump;
    return pump;
}

EventPump::Registration::Registration(UnifiedPluginAdapter& pumped) : adapter(pumped) {
    instance().add(adapter);
}

EventPump::Registration::~Registration() {
    instance().remove(adapter);
}

void EventPump::add(UnifiedPluginAdapter& adapter) {
    const std::lock_guard life(lifecycle);
    bool first = false;
    {
        const std::lock_guard held(mutex);
        first = adapters.empty();
        adapters.push_back(&adapter);
    }
    if (first) thread = std::thread([this] { run(); });
}

void EventPump::remove(UnifiedPluginAdapter& adapter) {
    const std::lock_guard life(lifecycle);
    bool last = false;
    {
        // Also waits for a round that is under way.
        const std::lock_guard held(mutex);
        std::erase(adapters, &adapter);
        last = adapters.empty();
    }
    if (!last) return;
    ending.notify_all();
    thread.join();
}

void EventPump::run() {
    std::unique_lock held(mutex);
    while (!adapters.empty()) {
        for (UnifiedPluginAdapter* adapter : adapters) adapter->claimAndPump();
        ending.wait_for(held, kInterval, [this] { return adapters.empty(); });
    }
}

}  // namespace vanta
