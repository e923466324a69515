#include "tests/support/realtime_trap.hpp"

#include <dlfcn.h>
#include <execinfo.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include <fmt/format.h>

#include "foundation/realtime.hpp"
#include "tests/support/realtime_trap_internal.hpp"

namespace vanta::test {
namespace {

constexpr int kOffencesKept = 16;
constexpr int kFrames = 32;

struct Offence {
    const char* call;
    long detail;
    int depth;
    std::array<void*, kFrames> frames;
};

struct Log {
    std::atomic<bool> armed{false};
    std::array<std::atomic<int>, RealtimeTrap::kKinds> counts{};
    std::atomic<int> kept{0};
    std::array<Offence, kOffencesKept> offences{};
};

Log offenceLog;
thread_local bool paused = false;

std::size_t placeOf(RealtimeTrap::Kind kind) {
    return static_cast<std::size_t>(kind);
}

/// The command that names the frames that lie in the program itself. Its symbols are hidden, so that a
/// backtrace shows them as offsets.
std::string namingCommand(const Offence& offence) {
    Dl_info program{};
    if (!dladdr(&offenceLog, &program)) return {};
    std::string command = fmt::format("addr2line -Cfpe {}", program.dli_fname);
    for (int i = 0; i < offence.depth; ++i) {
        void* const frame = offence.frames[static_cast<std::size_t>(i)];
        Dl_info info{};
        if (!dladdr(frame, &info) || info.dli_fbase != program.dli_fbase) continue;
        // A frame holds where the call returns to; the call itself stands before that.
        command += fmt::format(" {:#x}", reinterpret_cast<std::uintptr_t>(frame) -
                                             reinterpret_cast<std::uintptr_t>(info.dli_fbase) - 1);
    }
    return command;
}

void appendOffence(std::string& text, const Offence& offence) {
    text += offence.detail < 0 ? fmt::format("{}\n", offence.call)
                               : fmt::format("{} {}\n", offence.call, offence.detail);
    using Symbols = std::unique_ptr<char*[], void (*)(void*)>;
    const Symbols symbols(backtrace_symbols(offence.frames.data(), offence.depth), &std::free);
    for (int i = 0; symbols && i < offence.depth; ++i) {
        text += fmt::format("    {}\n", symbols[static_cast<std::size_t>(i)]);
    }
    text += fmt::format("    to name them: {}\n", namingCommand(offence));
}

}  // namespace

trap::Pause::Pause() : wasPaused_(paused), flag_(RealtimeScope::threadFlag()) {
    paused = true;
    RealtimeScope::threadFlag() = 0;
}

trap::Pause::~Pause() {
    RealtimeScope::threadFlag() = flag_;
    paused = wasPaused_;
}

void trap::offend(RealtimeTrap::Kind kind, const char* call, long detail) {
    if (paused || !RealtimeScope::active() || !offenceLog.armed.load(std::memory_order_acquire)) return;
    const Pause pause;  // taking a backtrace may allocate and lock
    offenceLog.counts[placeOf(kind)].fetch_add(1);
    if (offenceLog.kept.load() >= kOffencesKept) return;
    const int place = offenceLog.kept.fetch_add(1);
    if (place >= kOffencesKept) return;
    Offence& offence = offenceLog.offences[static_cast<std::size_t>(place)];
    offence.call = call;
    offence.detail = detail;
    offence.depth = backtrace(offence.frames.data(), kFrames);
}

RealtimeTrap::ThreadWatch::ThreadWatch() {
    trap::watchSystemCalls();
}

RealtimeTrap::ThreadWatch::~ThreadWatch() {
    trap::unwatchSystemCalls();
}

RealtimeTrap::RealtimeTrap() {
    trap::installInterposers();
    std::array<void*, 1> frame{};
    backtrace(frame.data(), 1);  // the first call loads the unwinder, here rather than in an offence
    clear();
    if (offenceLog.armed.exchange(true)) std::abort();
}

RealtimeTrap::~RealtimeTrap() {
    offenceLog.armed = false;
}

int RealtimeTrap::count(Kind kind) const {
    return offenceLog.counts[placeOf(kind)];
}

int RealtimeTrap::total() const {
    int sum = 0;
    for (const auto& count : offenceLog.counts) sum += count;
    return sum;
}

void RealtimeTrap::clear() {
    for (auto& count : offenceLog.counts) count = 0;
    offenceLog.kept = 0;
}

std::string RealtimeTrap::report() const {
    std::string text;
    const auto kept = static_cast<std::size_t>(std::min(offenceLog.kept.load(), kOffencesKept));
    for (std::size_t i = 0; i < kept; ++i) appendOffence(text, offenceLog.offences[i]);
    return text;
}

bool RealtimeTrap::catches(Kind kind) {
    if (kind == Kind::Allocation) return true;
    if (VANTA_TRAP_UNDER_SANITIZER) return false;
    if (kind == Kind::Lock) return true;
    const bool watched = trap::watchSystemCalls();
    if (watched) trap::unwatchSystemCalls();
    return watched;
}

}  // namespace vanta::test
