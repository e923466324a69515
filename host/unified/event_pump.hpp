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
    /// Pumps an adapter for as long as this lives. Ends without waiting for another's lock only outside of
    /// an interface's lock: to be made and dropped where none is held.
    class Registration {
    public:
        explicit Registration(UnifiedPluginAdapter& pumped);
        ~Registration();
        Registration(const Registration&) = delete;
        Registration& operator=(const Registration&) = delete;

    private:
        UnifiedPluginAdapter& adapter_;
    };

private:
    static EventPump& instance();

    void add(UnifiedPluginAdapter& adapter);
    void remove(UnifiedPluginAdapter& adapter);
    void run();

    std::mutex mutex_;      ///< for the list and what is pumped from it
    std::mutex lifecycle_;  ///< for starting and ending the thread
    std::condition_variable ending_;
    std::vector<UnifiedPluginAdapter*> adapters_;
    std::thread thread_;
};

}  // namespace vanta
