#pragma once

#include <span>

#include "kernel/kernel.hpp"

/// Arithmetic of the mixers. `out` may equal any input but must not overlap one otherwise; any length and
/// alignment.
namespace vanta::kernel {

/// A signal and its gains, one a sample. `constantGain` says that all of them equal the first.
struct MixTerm {
    const float* signal;
    const float* gain;
    bool constantGain;
};

/// out = the sum of signal * gain, added up in the order of the terms; silence for no terms. `out` may be the
/// first signal only.
extern const Kernel<void(std::span<const MixTerm> terms, float* out, std::size_t count)> sumProducts;

/// out = a - b * c
extern const TernaryKernel subtractProduct;
/// out = max(a, |b| * c)
extern const TernaryKernel maximumMagnitude;
/// out = max(a, b * c)
extern const TernaryKernel maximumProduct;
/// out = min(a, b * c)
extern const TernaryKernel minimumProduct;
/// out = a / |b * c| within 0 and 1, 0 where the divisor is 0
extern const TernaryKernel divideLimited;
/// out = a / |b * c|, both at least 1e-9
extern const TernaryKernel divideFloored;

/// Mixes a and b by a position c from -1, only a, to 1, only b. In between, `mixBothFull` keeps the nearer
/// side at full level, `mixLinear` fades linearly, and `mixConstantPower` keeps the sum of the powers.
extern const TernaryKernel mixBothFull;
extern const TernaryKernel mixLinear;
extern const TernaryKernel mixConstantPower;

}  // namespace vanta::kernel
