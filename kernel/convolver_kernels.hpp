#pragma once

#include "kernel/kernel.hpp"

/// What a partitioned convolution does between and after its transforms.
namespace vanta::kernel {

/// Two spectra of equal size that are multiplied with each other.
struct SpectrumPair {
    const float* input;
    const float* kernel;
};

/// How many pairs one call of `multiplySpectra` takes.
inline constexpr std::size_t kSpectrumPairs = 4;

/// sum = input * kernel over 1 to kSpectrumPairs pairs, on top of what `sum` holds if `accumulate`. Spectra
/// have `half` real parts, then `half` imaginary parts; at 0 and `half` stand the real values of DC and
/// Nyquist. Works on the bins `[begin, end)`, the Nyquist bin together with bin 0.
extern const Kernel<void(const SpectrumPair* pairs, std::size_t count, float* sum, std::size_t half,
                         std::size_t begin, std::size_t end, bool accumulate)>
    multiplySpectra;

/// out[i] = the sum of taps[j] * in[i - j] over all taps; `in` reaches back by `taps` - 1 samples.
extern const Kernel<void(const float* in, const float* taps, std::size_t tapCount, float* out,
                         std::size_t count)>
    fir;

/// to[i] = from[i] + (to[i] - from[i]) * (first + i) / length: a stretch of a linear crossfade, from sample
/// `first` of it on.
extern const Kernel<void(const float* from, float* to, float first, float length, std::size_t count)>
    crossfadeStretch;

/// out = a + offset
extern const Kernel<void(const float* a, float offset, float* out, std::size_t count)> addConstant;

/// Whether all samples equal the first one. False as soon as a NaN is met.
extern const Kernel<bool(const float* a, std::size_t count)> allEqual;

}  // namespace vanta::kernel
