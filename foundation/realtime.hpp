#pragma once

/// Marks a function that the audio thread calls in steady state: it neither allocates, locks nor calls the
/// system. The mark is for readers; the realtime tests trap what breaks it inside a RealtimeScope.
#define VANTA_REALTIME

namespace vanta {

/// Marks this thread as inside an audio callback. Costs two thread-local accesses.
class RealtimeScope {
public:
    RealtimeScope() {
        if (depth++ == 0) flag = 1;
    }
    ~RealtimeScope() {
        if (--depth == 0) flag = 0;
    }
    RealtimeScope(const RealtimeScope&) = delete;
    RealtimeScope& operator=(const RealtimeScope&) = delete;

    static bool active() { return depth > 0; }

    /// 1 inside a scope and 0 outside. One byte at a fixed place of the thread, so that the Linux kernel can
    /// take it as the switch of a system-call dispatch; that is how the tests see system calls.
    static volatile char& threadFlag() { return flag; }

private:
    static inline thread_local int depth = 0;
    static inline thread_local volatile char flag = 0;
};

}  // namespace vanta
