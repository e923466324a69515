#include "bench/compare/sampler.hpp"

#include <signal.h>
#include <sys/syscall.h>
#include <time.h>
#include <ucontext.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <stdexcept>

namespace vanta::bench {

namespace {

/// Prime to the length of a block in every rate, so that samples do not keep step with blocks.
constexpr long kIntervalNanoseconds = 211'237;

// What the signal handler writes: it cannot allocate.
std::array<std::uintptr_t, 1 << 18> places;
std::atomic<std::size_t> placeCount{0};

void note(int, siginfo_t*, void* context) {
    const auto* interrupted = static_cast<const ucontext_t*>(context);
    const std::size_t place = placeCount.load(std::memory_order_relaxed);
    if (place == places.size()) return;
    places[place] = static_cast<std::uintptr_t>(interrupted->uc_mcontext.gregs[REG_RIP]);
    placeCount.store(place + 1, std::memory_order_relaxed);
}

}  // namespace

Sampler::Sampler() {
    placeCount = 0;
    struct sigaction action {};
    action.sa_sigaction = note;
    action.sa_flags = SA_SIGINFO | SA_RESTART;
    sigaction(SIGPROF, &action, nullptr);
    sigevent event{};
    event.sigev_notify = SIGEV_THREAD_ID;
    event.sigev_signo = SIGPROF;
    event._sigev_un._tid = static_cast<pid_t>(syscall(SYS_gettid));
    timer_t timer{};
    if (timer_create(CLOCK_MONOTONIC, &event, &timer) != 0)
        throw std::runtime_error("the system gives no timer");
    timer_ = timer;
    const itimerspec interval{{0, kIntervalNanoseconds}, {0, kIntervalNanoseconds}};
    timer_settime(timer, 0, &interval, nullptr);
}

Sampler::~Sampler() {
    timer_delete(timer_);
    signal(SIGPROF, SIG_IGN);
}

std::span<const std::uintptr_t> Sampler::addresses() const {
    return std::span(places).first(placeCount.load());
}

}  // namespace vanta::bench
