#pragma once

#include "tests/support/realtime_trap.hpp"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define VANTA_TRAP_UNDER_SANITIZER 1
#else
#define VANTA_TRAP_UNDER_SANITIZER 0
#endif

namespace vanta::test::trap {

/// Counts an offence if this thread is inside a RealtimeScope and a trap is armed. `detail` is the number of
/// a system call, else -1. Safe within malloc and within a signal handler.
void offend(RealtimeTrap::Kind kind, const char* call, long detail);

/// Leaves the calling thread uncounted for a scope.
class Pause {
public:
    Pause();
    ~Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;

private:
    bool wasPaused_;
    char flag_;
};

/// The functions that stand in for malloc and pthread come into a program with this symbol.
void installInterposers();

/// Whether the kernel dispatches the system calls of the calling thread now.
bool watchSystemCalls();
void unwatchSystemCalls();

}  // namespace vanta::test::trap
