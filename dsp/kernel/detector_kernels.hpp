#pragma once

#include <cstddef>

/// The gain computer of the dynamics engine for its common settings: `in` is a level, `out` a gain change, in
/// the two forms of GainChangeDomain. Controls hold one value a sample: threshold, knee, limit in dB, ratio
/// as n of n:1, where 99.9999 and above stands for infinity. Finite inputs give finite results. `in` and
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

/// Infinite ratio, no knee, no limit, amplitude: out = 1 - A / max(A, |in|), A = 10^(threshold / 20).
void limitAmplitude(const float* in, float thresholdDb, float* out, std::size_t count);
/// The same with a threshold that moves.
void limitAmplitude(const float* in, const float* threshold, float* out, std::size_t count);
/// Infinite ratio, no knee, dB: out = in - threshold within 0 and the limit.
void limitDecibels(const float* in, const DetectorControls& controls, float* out, std::size_t count);

/// Compression without knee and limit, amplitude, at one ratio.
void compressAmplitudeHard(const float* in, const float* threshold, float ratio, float* out,
                           std::size_t count);
/// The same with a ratio that moves.
void compressAmplitudeHard(const float* in, const DetectorControls& controls, float* out, std::size_t count);
/// Compression, amplitude: the fraction to take away.
void compressAmplitude(const float* in, const DetectorControls& controls, float* out, std::size_t count);
/// Compression, dB.
void compressDecibels(const float* in, const DetectorControls& controls, float* out, std::size_t count);

/// Saturating curve, amplitude: out = 1 - 1 / v, v = 1 + |in (10^(-threshold / 20) - 1)| within 1 and the
/// limit; 0 for a threshold of 0 dB and above.
void clipAmplitude(const float* in, float thresholdDb, float limitDb, float* out, std::size_t count);

/// Downward expansion, amplitude: a plain gain. `hysteresisDb` is at least 0; `open`, while the signal has
/// not yet fallen that far below the threshold, is carried from sample to sample and to the next block.
void expandDownAmplitude(const float* in, const DetectorControls& controls, float hysteresisDb, bool& open,
                         float* out, std::size_t count);
/// The same in dB.
void expandDownDecibels(const float* in, const DetectorControls& controls, float hysteresisDb, bool& open,
                        float* out, std::size_t count);
/// Upward expansion, dB.
void expandUpDecibels(const float* in, const DetectorControls& controls, float* out, std::size_t count);

}  // namespace vanta::kernel
