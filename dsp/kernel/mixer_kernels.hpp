#pragma once

#include <cstddef>
#include <span>

/// Arithmetic of the mixers. `out` may equal any input but must not overlap one otherwise; any length and
/// alignment.
namespace vanta::kernel {

/// A signal and its gains, one a sample. `constantGain` says that all of them equal the first.
struct MixTerm {
    const float* signal;
    const float* gain;
    bool constantGain;
};

/// out = the sum of signal * gain, added up in the order of the terms. `out` may be the first signal only.
void sumProducts(std::span<const MixTerm> terms, float* out, std::size_t count);

/// out = a - x * gain
void subtractProduct(const float* a, const float* x, const float* gain, float* out, std::size_t count);
/// out = max(a, |x| * gain)
void maximumMagnitude(const float* a, const float* x, const float* gain, float* out, std::size_t count);
/// out = max(a, x * gain)
void maximumProduct(const float* a, const float* x, const float* gain, float* out, std::size_t count);
/// out = min(a, x * gain)
void minimumProduct(const float* a, const float* x, const float* gain, float* out, std::size_t count);
/// out = a / |x * gain| within 0 and 1, 0 where the divisor is 0
void divideLimited(const float* a, const float* x, const float* gain, float* out, std::size_t count);
/// out = a / |x * gain|, both at least 1e-9
void divideFloored(const float* a, const float* x, const float* gain, float* out, std::size_t count);

/// Mixes a and b by a position from -1, only a, to 1, only b. Between them, both stay full on the nearer
/// side; fade linearly; or keep the sum of their powers.
void mixBothFull(const float* a, const float* b, const float* position, float* out, std::size_t count);
void mixLinear(const float* a, const float* b, const float* position, float* out, std::size_t count);
void mixConstantPower(const float* a, const float* b, const float* position, float* out, std::size_t count);

}  // namespace vanta::kernel
