#pragma once

/// Marks a function that the audio thread calls in steady state: it neither allocates, locks nor calls the
/// system. The mark is for readers; the realtime tests trap what breaks it inside a RealtimeScope.
#define VANTA_REALTIME

namespace vanta {

/// Says that this thread is inside an audio callback. Costs one thread-local increment.
class RealtimeScope {
public:
    RealtimeScope() { ++depth; }
    ~RealtimeScope() { --depth; }
    RealtimeScope(const RealtimeScope&) = delete;
    RealtimeScope& operator=(const RealtimeScope&) = delete;

    static bool active() { return depth > 0; }

private:
    static inline thread_local int depth = 0;
};

}  // namespace vanta
