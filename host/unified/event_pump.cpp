#include "host/unified/event_pump.hpp"

#include <chrono>
#include <utility>

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
    const std::lock_guard held(mutex_);
    adapters_.reserve(adapters_.size() + 1);
    if (!thread_.joinable()) thread_ = std::thread([this, own = generation_] { run(own); });
    adapters_.push_back(&adapter);
}

void EventPump::remove(UnifiedPluginAdapter& adapter) {
    std::thread ended;
    {
        std::unique_lock held(mutex_);
        std::erase(adapters_, &adapter);
        changed_.wait(held, [&] { return pumped_ != &adapter; });
        // Who is being pumped while there are none is on its way out as well, and the last to go.
        if (!adapters_.empty() || pumped_ || !thread_.joinable()) return;
        ended = release();
    }
    ended.join();
}

/// Hands out the thread, which is about to end. Under the lock.
std::thread EventPump::release() {
    ++generation_;
    changed_.notify_all();
    return std::move(thread_);
}

EventPump::~EventPump() {
    std::unique_lock held(mutex_);
    std::thread ended = release();
    held.unlock();
    if (ended.joinable()) ended.join();
}

void EventPump::run(int generation) {
    std::unique_lock held(mutex_);
    const auto isOver = [&] { return generation_ != generation; };
    while (!isOver()) {
        // By position, as others come and go meanwhile: who is passed over has a turn soon.
        for (std::size_t i = 0; i < adapters_.size() && !isOver(); ++i) pump(*adapters_[i], held);
        changed_.wait_for(held, kInterval, isOver);
    }
}

void EventPump::pump(UnifiedPluginAdapter& adapter, std::unique_lock<std::mutex>& held) {
    pumped_ = &adapter;
    held.unlock();
    adapter.claimAndPump();
    held.lock();
    pumped_ = nullptr;
    changed_.notify_all();
}

}  // namespace vanta
