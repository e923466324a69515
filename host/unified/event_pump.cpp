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

EventPump::Registration::Registration(UnifiedPluginAdapter& pumped) : adapter_(pumped) {
    instance().add(adapter_);
}

EventPump::Registration::~Registration() {
    instance().remove(adapter_);
}

void EventPump::add(UnifiedPluginAdapter& adapter) {
    const std::lock_guard life(lifecycle_);
    bool first = false;
    {
        const std::lock_guard held(mutex_);
        first = adapters_.empty();
        adapters_.push_back(&adapter);
    }
    if (first) thread_ = std::thread([this] { run(); });
}

void EventPump::remove(UnifiedPluginAdapter& adapter) {
    const std::lock_guard life(lifecycle_);
    bool last = false;
    {
        // Also waits for a round that is under way.
        const std::lock_guard held(mutex_);
        std::erase(adapters_, &adapter);
        last = adapters_.empty();
    }
    if (!last) return;
    ending_.notify_all();
    thread_.join();
}

void EventPump::run() {
    std::unique_lock held(mutex_);
    while (!adapters_.empty()) {
        for (UnifiedPluginAdapter* adapter : adapters_) adapter->claimAndPump();
        ending_.wait_for(held, kInterval, [this] { return adapters_.empty(); });
    }
}

}  // namespace vanta
