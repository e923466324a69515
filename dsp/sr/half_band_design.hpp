#pragma once

#include "wave/aligned_buffer.hpp"

/// Design of the linear-phase half-band filters that change a sample rate by two, and what follows from their
/// lengths. Kaiser's window method: J. F. Kaiser, "Nonrecursive digital filter design using the I0-sinh
/// window function", 1974.
namespace vanta::sr {

/// Transition widths are fractions of the lower of the two rates. A stage that is not next to the base rate
/// has nothing to keep in the upper half of its band.
inline constexpr float kWideTransition = 0.5f;
inline constexpr float kNarrowestTransition = 0.09f;

/// Taps of one filter followed by a few zeros, so that loops may read whole vectors.
struct CoefficientSet {
    wave::AlignedBuffer<float> taps;
    int length = 0;
};

/// The transition width next to the base rate: from `passband` Hz, which passes, to the frequency that
/// mirrors it; never below kNarrowestTransition.
float narrowTransition(float sampleRate, float passband);
/// Taps of a filter with that transition and `attenuation` in dB: 4 k + 1, at least 5.
int halfBandLength(float transition, double attenuation);
/// The filter of that length. Its taps sum to 1; those at an even distance from the centre are 0.
CoefficientSet designHalfBand(int length, double attenuation);
/// The taps that make the odd outputs of an interpolator: every second tap of `full`, doubled.
CoefficientSet polyphaseBranch(const CoefficientSet& full);

/// Samples at the rate of `ratio` times the base rate by which a stage lags, `tapCount` being that of a full
/// filter: rounded up to whole samples of the base rate.
int stageDelay(int tapCount, int ratio);

/// Delay in samples of the base rate of an interpolator and a decimator in a row, for a factor of 1, 2, 4, 8,
/// 16 or 32, a base rate and a passband in Hz, an attenuation in dB. It is always even: either of the two
/// takes exactly one half of it. Computes a few divisions; any thread.
int filterLatency(int factor, double sampleRate, double attenuation, double passband);

/// The factor at which inter-sample peaks are looked for: 8, or what keeps the higher rate at or below 384
/// kHz, at least 2.
int truePeakFactor(double sampleRate);

}  // namespace vanta::sr
