#pragma once

#include <array>
#include <atomic>
#include <functional>
#include <vector>

#include <travesty/view.h>

#include "host/vst3/com.hpp"
#include "host/vst3/host_interface.hpp"

namespace vanta::vst3 {

/// A timer on the host's main thread, and descriptors that are waited for, from the first run loop that any
/// of the host's objects offers. Hosts differ in where they have one: in what they hand to the factory or to
/// the instance, or only in the frame of an open view. All on the main thread.
class RunLoopTimer {
public:
    enum class Source { Context, Factory, Handler, Frame };

    explicit RunLoopTimer(std::function<void()> onTimer);
    ~RunLoopTimer();
    RunLoopTimer(const RunLoopTimer&) = delete;
    RunLoopTimer& operator=(const RunLoopTimer&) = delete;

    /// Looks for a run loop at an object of the host's; null takes that of the source away.
    template <typename Interface>
    void look(Source source, Interface** object) {
        loops_[static_cast<std::size_t>(source)] = HostInterface<v3_run_loop>::of(object, v3_run_loop_iid);
        choose();
    }
    void stop();
    /// It is called as well when a descriptor can be read, until that is taken back.
    void watch(int fd);
    void unwatch(int fd);
    /// Any thread.
    bool isRunning() const { return running_.load(); }

private:
    template <typename Kind>
    class Handler;
    struct TimerKind;
    struct EventKind;
    using TimerHandler = Handler<TimerKind>;
    using EventHandler = Handler<EventKind>;
    struct Watched {
        int fd;
        EventHandler* handler;
    };

    /// Sixty frames a second.
    static constexpr std::uint64_t kIntervalMs = 16;

    void choose();
    void startWatching(const Watched& watched);
    void stopWatching(const Watched& watched);

    std::array<HostInterface<v3_run_loop>, 4> loops_;
    HostInterface<v3_run_loop> loop_;  ///< that calls
    std::function<void()> onTimer_;
    TimerHandler* handler_;
    std::vector<Watched> watched_;
    std::atomic<bool> running_{false};
};

}  // namespace vanta::vst3
