#pragma once

#include "kernel/kernel.hpp"

/// The gain computer of the dynamics engine for its common settings: `in` is a level, `out` a gain change, in
/// the two forms of GainChangeDomain. Controls hold one value a sample: threshold, knee, limit in dB, ratio
/// as n of n:1, where 99.9999 and above means infinity. Finite inputs give finite results. `in` and
/// `out` may be equal but must not overlap otherwise, nor may `out` overlap a control; any length and
/// alignment.
namespace vanta::kernel {

/// Ratios from here on are infinite.
inline constexpr float kInfiniteRatio = 99.9999f;

struct DetectorControls {
    const float* knee;  ///< full width, the quadratic bend between the two straight parts
    const float* threshold;
    const float* ratio;
    const float* limit;  ///< largest gain change
};

using GainComputerKernel =
    Kernel<void(const float* in, const DetectorControls& controls, float* out, std::size_t count)>;

/// Infinite ratio, no knee, no limit, amplitude: out = 1 - A / max(A, |in|), A = 10^(threshold / 20).
extern const BinaryKernel limitAmplitude;
/// The same with a constant threshold.
extern const Kernel<void(const float* in, float thresholdDb, float* out, std::size_t count)>
    limitAmplitudeSteady;
/// Infinite ratio, no knee, dB: out = in - threshold within 0 and the limit.
extern const GainComputerKernel limitDecibels;

/// Compression without knee and limit, amplitude.
extern const GainComputerKernel compressAmplitudeHard;
/// The same with a constant ratio.
extern const Kernel<void(const float* in, const float* threshold, float ratio, float* out, std::size_t count)>
    compressAmplitudeHardSteady;
/// Compression, amplitude: the fraction to take away.
extern const GainComputerKernel compressAmplitude;
/// Compression, dB.
extern const GainComputerKernel compressDecibels;

/// Saturating curve, amplitude: out = 1 - 1 / v, v = 1 + |in (10^(-threshold / 20) - 1)| within 1 and the
/// limit; 0 for a threshold of 0 dB and above.
extern const Kernel<void(const float* in, float thresholdDb, float limitDb, float* out, std::size_t count)>
    clipAmplitude;

/// `hysteresisDb` is at least 0; `open`, while the signal has not yet fallen that far below the threshold, is
/// carried from sample to sample and to the next block.
using GateKernel = Kernel<void(const float* in, const DetectorControls& controls, float hysteresisDb,
                               bool& open, float* out, std::size_t count)>;

/// Downward expansion, amplitude: a plain gain.
extern const GateKernel expandDownAmplitude;
/// Downward expansion, dB.
extern const GateKernel expandDownDecibels;
/// Upward expansion, dB.
extern const GainComputerKernel expandUpDecibels;

}  // namespace vanta::kernel
