#pragma once

#include <cstdint>

namespace vanta {

/// Measures intervals in milliseconds.
class IntervalTimer {
public:
    virtual ~IntervalTimer() = default;
    /// Milliseconds since construction or the last `reset`.
    virtual int elapsed() const = 0;
    virtual void reset() = 0;
};

/// Counts on a 32-bit clock that never jumps with the time of day. Differences are taken modulo 2^32, so
/// that a wrap of the clock, every 49.7 days, does no harm.
class SteadyIntervalTimer final : public IntervalTimer {
public:
    using Clock = std::uint32_t (*)();

    /// `clock` gives milliseconds and may wrap.
    explicit SteadyIntervalTimer(Clock clock = &monotonicMilliseconds) : now_(clock), start_(clock()) {}
    int elapsed() const override { return static_cast<int>(now_() - start_); }
    void reset() override { start_ = now_(); }

    static std::uint32_t monotonicMilliseconds();

private:
    Clock now_;
    std::uint32_t start_;
};

}  // namespace vanta
