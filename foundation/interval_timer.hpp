#pragma once

#include <cstdint>

namespace vanta {

/// Measures intervals in milliseconds.
class IntervalTimer {
public:
    virtual ~IntervalTimer() = default;
    /// Milliseconds since construction or the last `reset`. Never negative, however long that was.
    virtual std::int64_t elapsed() const = 0;
    virtual void reset() = 0;
};

/// Counts on a clock that never jumps with the time of day. Sessions stay open for weeks, and 32 bits of
/// milliseconds would turn negative after 24.8 days.
class SteadyIntervalTimer final : public IntervalTimer {
public:
    using Clock = std::int64_t (*)();

    /// `clock` gives milliseconds and never goes back.
    explicit SteadyIntervalTimer(Clock clock = &monotonicMilliseconds) : now_(clock), start_(clock()) {}
    std::int64_t elapsed() const override { return now_() - start_; }
    void reset() override { start_ = now_(); }

    static std::int64_t monotonicMilliseconds();

private:
    Clock now_;
    std::int64_t start_;
};

}  // namespace vanta
