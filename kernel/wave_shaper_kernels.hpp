#pragma once

#include "kernel/kernel.hpp"

/// Curves that bend a waveform, and the tables by which a drive scales what goes in and comes out. Results
/// are finite for every finite input. Buffers may be equal but must not overlap otherwise; any length and
/// alignment. All curves but the last two are odd; v stands for |a| limited to 1.
namespace vanta::kernel {

/// out = 2/pi arctan(pi/2 a)
extern const UnaryKernel vectorClipArcTanFast;
/// out = a / (1 + |a|)
extern const UnaryKernel vectorClipDivAbsFast;
/// out = sin(pi/2 v)
extern const UnaryKernel vectorClipSineFast;
/// out = 2 v - v^2
extern const UnaryKernel vectorClipPolynomeOrder2Fast;
/// out = 1.5 v - 0.5 v^3
extern const UnaryKernel vectorClipPolynomeOrder3Fast;
/// A valve that is driven out of its straight part, by pieces: flat at either end, a parabola around 0 and a
/// power of twelve below it.
extern const UnaryKernel vectorClipTubeFast;
/// out = 2 v - v^2 whatever the sign
extern const UnaryKernel vectorClipRectifyFast;

/// Where the pieces of the tube's curve meet, and what it is beyond the outer two.
inline constexpr float kTubeLowEnd = -1.75481796f;
inline constexpr float kTubeKnee = -0.08905f;
inline constexpr float kTubeHighEnd = 0.320018f;
inline constexpr float kTubeLowest = -1.17545104f;
inline constexpr float kTubeHighest = 0.629932761f;

/// out = a * the table's value at `position`, where 0 is its first point and 1 its last. Positions beyond
/// count as the end. `table` holds `points` values, at least 2, and the last one once more.
extern const Kernel<void(const float* a, const float* position, const float* table, std::size_t points,
                         float* out, std::size_t count)>
    scaleByTable;

}  // namespace vanta::kernel
