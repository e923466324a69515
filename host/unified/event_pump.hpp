#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace vanta {

class UnifiedPluginAdapter;

/// For hosts that never call on a main thread: one thread of the process pumps the events of all instances
/// that ask for it. It runs while there is any.
class EventPump {
public:
    /// Pumps an adapter for as long as this lives. Its end waits for a round of this adapter that is under
    /// way, so it must not come under a lock that the adapter's listener or host takes, nor within a call
    /// of theirs. What a round calls may make and drop registrations of others.
    class Registration {
    public:
        explicit Registration(UnifiedPluginAdapter& pumped);
        ~Registration();
        Registration(const Registration&) = delete;
        Registration& operator=(const Registration&) = delete;

    private:
        UnifiedPluginAdapter& adapter_;
    };

    /// Hosts may end the process with instances still there: the thread then ends first.
    ~EventPump();
    EventPump(const EventPump&) = delete;
    EventPump& operator=(const EventPump&) = delete;

private:
    EventPump() = default;
    static EventPump& instance();

    void add(UnifiedPluginAdapter& adapter);
    void remove(UnifiedPluginAdapter& adapter);
    std::thread release();
    void run(int generation);
    void pump(UnifiedPluginAdapter& adapter, std::unique_lock<std::mutex>& held);

    std::mutex mutex_;  ///< for all that follows; not held while an adapter is pumped
    std::condition_variable changed_;
    std::vector<UnifiedPluginAdapter*> adapters_;
    UnifiedPluginAdapter* pumped_ = nullptr;
    std::thread thread_;
    int generation_ = 0;  ///< of the thread: one that was ended finds another number
};

}  // namespace vanta
