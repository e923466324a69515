#pragma once

#include "kernel/kernel.hpp"

/// Arithmetic on blocks. Buffers may be equal but must not overlap otherwise; any length and alignment.
namespace vanta::kernel {

/// 2 to the power 20, about 120 dB above full scale: no sample that a host means is larger.
inline constexpr float kLargestSample = 1048576.0f;

/// out = a * gain
extern const Kernel<void(const float* a, float gain, float* out, std::size_t count)> scale;
/// out = a * b
extern const BinaryKernel multiply;
/// out = a * b * c
extern const TernaryKernel multiplyTwice;
/// out = a + b
extern const BinaryKernel add;
/// out = a - b
extern const BinaryKernel subtract;
/// out = a + b * gain
extern const Kernel<void(const float* a, const float* b, float gain, float* out, std::size_t count)>
    addScaled;
/// out = a + b * c
extern const TernaryKernel multiplyAdd;
/// out = |a|
extern const UnaryKernel magnitude;
/// out = max(a, b)
extern const BinaryKernel maximum;
/// out = min(max(a, low), high)
extern const Kernel<void(const float* a, float low, float high, float* out, std::size_t count)> clamp;
/// out = a + (b - a) * c
extern const TernaryKernel crossfade;
/// out = a + (b - a) * amount
extern const Kernel<void(const float* a, const float* b, float amount, float* out, std::size_t count)>
    moveToward;
/// out = 1 - a
extern const UnaryKernel complement;
/// out = a, where a sample that is not finite counts as 0 and a magnitude above kLargestSample is limited to
/// it. Every finite sample within the limit passes bit for bit.
extern const UnaryKernel sanitize;
/// out = value
extern const Kernel<void(float value, float* out, std::size_t count)> fill;

}  // namespace vanta::kernel
