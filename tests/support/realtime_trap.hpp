#pragma once

#include <string>

namespace vanta::test {

/// Counts what an audio thread must not do, on every thread that is inside a RealtimeScope, from
/// construction to destruction. One trap at a time.
///
/// Allocations are all of malloc, calloc, realloc, free and their aligned kin, which new and delete rest
/// on. Locks are mutexes, read-write locks, condition variables and semaphores of pthread, try-locks
/// included. System calls are caught in the kernel, whoever makes them; what the vDSO answers without the
/// kernel, such as reading a clock, does not count.
class RealtimeTrap {
public:
    enum class Kind { Allocation, Lock, SystemCall };
    static constexpr int kKinds = 3;

    /// Watches the calling thread; further threads need a ThreadWatch.
    RealtimeTrap();
    ~RealtimeTrap();
    RealtimeTrap(const RealtimeTrap&) = delete;
    RealtimeTrap& operator=(const RealtimeTrap&) = delete;

    int count(Kind kind) const;
    int total() const;
    void clear();
    /// The first offences, each with the call and a backtrace; empty if there were none.
    std::string report() const;

    /// Whether this build and kernel can see that kind. Under AddressSanitizer and ThreadSanitizer, which
    /// replace the same functions, only allocations are seen.
    static bool catches(Kind kind);

    /// Lets the kernel report the system calls of the thread that makes it, for the time of its life.
    /// Allocations and locks are seen on any thread without it.
    class ThreadWatch {
    public:
        ThreadWatch();
        ~ThreadWatch();
        ThreadWatch(const ThreadWatch&) = delete;
        ThreadWatch& operator=(const ThreadWatch&) = delete;
    };

private:
    ThreadWatch watch_;
};

}  // namespace vanta::test
