#include "host/vst3/run_loop_timer.hpp"

#include <utility>

namespace vanta::vst3 {

/// What the host calls. It may hold it for longer than the timer lives.
class RunLoopTimer::Handler final : public ComObject, public ComInterface {
public:
    explicit Handler(std::function<void()> onTimer)
        : ComInterface(kTable, *this), onTimer_(std::move(onTimer)) {}
    void detach() { onTimer_ = nullptr; }
    v3_timer_handler** pointer() {
        return static_cast<v3_timer_handler**>(static_cast<void*>(static_cast<ComInterface*>(this)));
    }

protected:
    ComInterface* interfaceOf(const std::uint8_t* id) noexcept override {
        return v3_tuid_match(id, v3_funknown_iid) || v3_tuid_match(id, v3_timer_handler_iid) ? this : nullptr;
    }

private:
    static void call(void* self) {
        auto& handler = *static_cast<Handler*>(static_cast<ComInterface*>(self));
        const ComScope held(handler);
        try {
            if (handler.onTimer_) handler.onTimer_();
        } catch (...) {
            // The next tick tries again; there is nobody to tell.
        }
    }
    static const v3_timer_handler_cpp kTable;

    std::function<void()> onTimer_;
};

const v3_timer_handler_cpp RunLoopTimer::Handler::kTable{kUnknown, {call}};

RunLoopTimer::RunLoopTimer(std::function<void()> onTimer) : handler_(new Handler(std::move(onTimer))) {}

RunLoopTimer::~RunLoopTimer() {
    stop();
    handler_->detach();
    handler_->unref();
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
    if (loop_) loop_.call(&v3_run_loop::unregister_timer, handler_->pointer());
    loop_ = HostInterface<v3_run_loop>(wanted);
    const bool runs =
        loop_ && loop_.call(&v3_run_loop::register_timer, handler_->pointer(), kIntervalMs) == V3_OK;
    if (!runs) loop_ = {};
    running_.store(runs);
}

}  // namespace vanta::vst3
