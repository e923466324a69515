#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <span>
#include <vector>

namespace vanta {

/// Kaiser's window with side lobes at -80 dB (J. F. Kaiser, 1974), 1 at `place` 0 and 0 from 1 on.
double kaiserWindow(double place);

/// A stream's newest samples, and as many before them as somebody still needs, in one piece of memory.
class RecentSamples {
public:
    /// `kept` samples of silence lie before the first one.
    explicit RecentSamples(std::size_t kept);

    /// Room for the next `count` samples, to be written at once.
    float* append(std::size_t count);
    /// The sample `back` places before the newest one, and all that follow it.
    const float* before(std::size_t back) const { return samples_.data() + end_ - 1 - back; }

private:
    std::size_t kept_;
    std::size_t end_;
    std::vector<float> samples_;
};

/// The half-band filter that both steps share: 4 kReach + 1 taps, flat to 0.17 of the higher rate.
struct HalfBand {
    static constexpr std::size_t kReach = 8;
    static constexpr std::size_t kTaps = 4 * kReach + 1;
    static constexpr std::size_t kBranch = 2 * kReach;

    std::array<float, kTaps> taps;      ///< for a step down
    std::array<float, kBranch> branch;  ///< for a step up: the taps between two samples

    static const HalfBand& get();
};

/// Halves the rate of a stream. Output i is the filtered input 2 (i - kReach).
class StepDown {
public:
    StepDown() : recent_(HalfBand::kTaps - 1) {}
    /// Two samples of `in` for each one of `out`.
    void process(std::span<const float> in, float* out);

private:
    RecentSamples recent_;
};

/// Doubles the rate of a stream. Output 2 i is input i - kReach as it is.
class StepUp {
public:
    StepUp() : recent_(HalfBand::kBranch - 1) {}
    /// One sample of `in` for two of `out`.
    void process(std::span<const float> in, float* out);

private:
    RecentSamples recent_;
};

}  // namespace vanta
