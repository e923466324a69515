// Sees the system calls of a thread through "syscall user dispatch" of Linux (5.11 and later): while a byte
// of the thread is 1, each call becomes a SIGSYS instead. The handler counts it, makes it, and returns its
// result. The byte is RealtimeScope's own flag, so that entering a scope costs nothing extra.

#include "tests/support/realtime_trap_internal.hpp"

#if defined(__x86_64__) && defined(__linux__) && !VANTA_TRAP_UNDER_SANITIZER

#include <sys/prctl.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>
#include <csignal>

#include "foundation/realtime.hpp"

#ifndef PR_SET_SYSCALL_USER_DISPATCH
#define PR_SET_SYSCALL_USER_DISPATCH 59
#define PR_SYS_DISPATCH_OFF 0
#define PR_SYS_DISPATCH_ON 1
#endif

// The way back from the handler is a system call itself. It stands in the range that the kernel leaves
// alone, which is compared with the address behind the instruction. The bytes are those by which unwinders
// know a signal frame.
asm(R"(
    .pushsection .text
    .balign 16
vantaTrapRestorer:
    movq $15, %rax
    syscall
    nop
vantaTrapRestorerEnd:
    .popsection
)");
extern "C" const char vantaTrapRestorer[] __attribute__((visibility("hidden")));
extern "C" const char vantaTrapRestorerEnd[] __attribute__((visibility("hidden")));

namespace {

using vanta::RealtimeScope;
using vanta::test::RealtimeTrap;

thread_local int watches = 0;

/// The kernel's own layout; the C library's sigaction puts its own restorer in.
struct KernelSigaction {
    void (*handler)(int, siginfo_t*, void*);
    unsigned long flags;
    const char* restorer;
    unsigned long mask;
};

/// Calls that only make sense where they stand: they leave by another way than they came, or act on the
/// signal frame.
bool mustRunInPlace(long number) {
    switch (number) {
        case SYS_rt_sigreturn:
        case SYS_rt_sigprocmask:
        case SYS_sigaltstack:
        case SYS_clone:
        case SYS_clone3:
        case SYS_fork:
        case SYS_vfork:
            return true;
        default:
            return false;
    }
}

long rawCall(const greg_t* r) {
    register long r10 asm("r10") = r[REG_R10];
    register long r8 asm("r8") = r[REG_R8];
    register long r9 asm("r9") = r[REG_R9];
    long result = r[REG_RAX];
    asm volatile("syscall"
                 : "+a"(result)
                 : "D"(r[REG_RDI]), "S"(r[REG_RSI]), "d"(r[REG_RDX]), "r"(r10), "r"(r8), "r"(r9)
                 : "rcx", "r11", "memory");
    return result;
}

void onSystemCall(int, siginfo_t* info, void* context) {
    RealtimeScope::threadFlag() = 0;
    greg_t* const registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
    const long number = info->si_syscall;
    registers[REG_RAX] = number;
    if (number != SYS_rt_sigreturn) {
        vanta::test::trap::offend(RealtimeTrap::Kind::SystemCall, "system call", number);
    }
    if (mustRunInPlace(number)) {
        registers[REG_RIP] -= 2;  // back onto the instruction; unwatched until the next scope
        return;
    }
    registers[REG_RAX] = rawCall(registers);
    RealtimeScope::threadFlag() = RealtimeScope::active() ? 1 : 0;
}

bool installHandler() {
    constexpr unsigned long kRestorer = 0x04000000;  // SA_RESTORER
    const KernelSigaction action{&onSystemCall, SA_SIGINFO | SA_NODEFER | kRestorer, vantaTrapRestorer, 0};
    return syscall(SYS_rt_sigaction, SIGSYS, &action, nullptr, sizeof action.mask) == 0;
}

}  // namespace

bool vanta::test::trap::watchSystemCalls() {
    static const bool installed = installHandler();
    if (!installed) return false;
    if (watches++ > 0) return true;
    const auto length = static_cast<unsigned long>(vantaTrapRestorerEnd - vantaTrapRestorer);
    if (prctl(PR_SET_SYSCALL_USER_DISPATCH, PR_SYS_DISPATCH_ON, vantaTrapRestorer, length,
              &RealtimeScope::threadFlag()) == 0) {
        return true;
    }
    watches = 0;
    return false;
}

void vanta::test::trap::unwatchSystemCalls() {
    if (watches == 0 || --watches > 0) return;
    prctl(PR_SET_SYSCALL_USER_DISPATCH, PR_SYS_DISPATCH_OFF, 0, 0, 0);
}

#else

bool vanta::test::trap::watchSystemCalls() {
    return false;
}

void vanta::test::trap::unwatchSystemCalls() {}

#endif
