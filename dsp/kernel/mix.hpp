#pragma once

#include <cstddef>

/// Arithmetic on blocks. Buffers may be equal but must not overlap otherwise; any length and alignment.
namespace vanta::kernel {

/// 2 to the power 20, about 120 dB above full scale: no sample that a host means is larger.
inline constexpr float kLargestSample = 1048576.0f;

/// out = a * gain
void scale(const float* a, float gain, float* out, std::size_t count);
/// out = a * b
void multiply(const float* a, const float* b, float* out, std::size_t count);
/// out = a * b * c
void multiply(const float* a, const float* b, const float* c, float* out, std::size_t count);
/// out = a + b
void add(const float* a, const float* b, float* out, std::size_t count);
/// out = a - b
void subtract(const float* a, const float* b, float* out, std::size_t count);
/// out = a + b * gain
void addScaled(const float* a, const float* b, float gain, float* out, std::size_t count);
/// out = a + b * c
void multiplyAdd(const float* a, const float* b, const float* c, float* out, std::size_t count);
/// out = |a|
void magnitude(const float* a, float* out, std::size_t count);
/// out = max(a, b)
void maximum(const float* a, const float* b, float* out, std::size_t count);
/// out = min(a, b)
void minimum(const float* a, const float* b, float* out, std::size_t count);
/// out = min(max(a, low), high)
void clamp(const float* a, float low, float high, float* out, std::size_t count);
/// out = a + (b - a) * mix
void crossfade(const float* a, const float* b, const float* mix, float* out, std::size_t count);
/// out = a + (b - a) * amount
void moveToward(const float* a, const float* b, float amount, float* out, std::size_t count);
/// out = 1 - a
void complement(const float* a, float* out, std::size_t count);
/// The largest |a|, 0 for an empty block.
float peak(const float* a, std::size_t count);
/// out = a, where a sample that is not finite counts as 0 and a magnitude above kLargestSample is limited to
/// it. Every finite sample within the limit passes bit for bit.
void sanitize(const float* a, float* out, std::size_t count);
/// out = value
void fill(float value, float* out, std::size_t count);

}  // namespace vanta::kernel
