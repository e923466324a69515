#include "host/vst3/run_loop_timer.hpp"

#include <algorithm>
#include <utility>

namespace vanta::vst3 {

/// What the host calls. It may hold it for longer than the timer lives.
template <typename Kind>
class RunLoopTimer::Handler final : public ComObject, public ComInterface {
public:
    explicit Handler(std::function<void()> onCall)
        : ComInterface(Kind::kTable, *this), onCall_(std::move(onCall)) {}
    /// Nothing comes of its calls any more.
    void drop() {
        onCall_ = nullptr;
        unref();
    }
    typename Kind::Interface** pointer() {
        return static_cast<typename Kind::Interface**>(static_cast<void*>(static_cast<ComInterface*>(this)));
    }
    static Handler& of(void* self) { return *static_cast<Handler*>(static_cast<ComInterface*>(self)); }

    void call() {
        const ComScope held(*this);
        try {
            // It may be dropped meanwhile.
            const std::function<void()> call = onCall_;
            if (call) call();
        } catch (...) {
            // The next tick tries again; there is nobody to tell.
        }
    }

protected:
    ComInterface* interfaceOf(const std::uint8_t* id) noexcept override {
        return v3_tuid_match(id, v3_funknown_iid) || v3_tuid_match(id, Kind::id()) ? this : nullptr;
    }

private:
    std::function<void()> onCall_;
};

struct RunLoopTimer::TimerKind {
    using Interface = v3_timer_handler;
    static const std::uint8_t* id() { return v3_timer_handler_iid; }
    static const v3_timer_handler_cpp kTable;
};
struct RunLoopTimer::EventKind {
    using Interface = v3_event_handler;
    static const std::uint8_t* id() { return v3_event_handler_iid; }
    static const v3_event_handler_cpp kTable;
};
const v3_timer_handler_cpp RunLoopTimer::TimerKind::kTable{
    kUnknown, {[](void* self) { TimerHandler::of(self).call(); }}};
const v3_event_handler_cpp RunLoopTimer::EventKind::kTable{
    kUnknown, {[](void* self, int) { EventHandler::of(self).call(); }}};

RunLoopTimer::RunLoopTimer(std::function<void()> onTimer)
    : onTimer_(std::move(onTimer)), handler_(new TimerHandler(onTimer_)) {}

RunLoopTimer::~RunLoopTimer() {
    stop();
    while (!watched_.empty()) unwatch(watched_.back().fd);
    handler_->drop();
}

void RunLoopTimer::watch(int fd) {
    watched_.push_back({fd, new EventHandler(onTimer_)});
    startWatching(watched_.back());
}

void RunLoopTimer::unwatch(int fd) {
    const auto found = std::ranges::find(watched_, fd, &Watched::fd);
    if (found == watched_.end()) return;
    const Watched watched = *found;
    watched_.erase(found);
    stopWatching(watched);
    watched.handler->drop();
}

void RunLoopTimer::startWatching(const Watched& watched) {
    if (loop_) loop_.call(&v3_run_loop::register_event_handler, watched.handler->pointer(), watched.fd);
}

void RunLoopTimer::stopWatching(const Watched& watched) {
    if (loop_) loop_.call(&v3_run_loop::unregister_event_handler, watched.handler->pointer());
}

void RunLoopTimer::stop() {
    for (auto& loop : loops_) loop = {};
    choose();
}

void RunLoopTimer::choose() {
    HostInterface<v3_run_loop>* chosen = nullptr;
    for (auto& loop : loops_) {
        if (!chosen && loop) chosen = &loop;
    }
    v3_run_loop** const wanted = chosen ? chosen->get() : nullptr;
    if (wanted == loop_.get()) return;
    for (const Watched& watched : watched_) stopWatching(watched);
    if (loop_) loop_.call(&v3_run_loop::unregister_timer, handler_->pointer());
    loop_ = HostInterface<v3_run_loop>(wanted);
    const bool runs =
        loop_ && loop_.call(&v3_run_loop::register_timer, handler_->pointer(), kIntervalMs) == V3_OK;
    if (!runs) loop_ = {};
    for (const Watched& watched : watched_) startWatching(watched);
    running_.store(runs);
}

}  // namespace vanta::vst3
