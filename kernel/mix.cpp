#include "kernel/mix.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernel/mix.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "kernel/vector_loop.hpp"

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

void scale(const float* a, float gain, float* out, std::size_t count) {
    mapBlocks(
        out, count, [&](auto d, auto x) { return hn::Mul(x, hn::Set(d, gain)); }, a);
}

void multiply(const float* a, const float* b, float* out, std::size_t count) {
    mapBlocks(
        out, count, [](auto, auto x, auto y) { return hn::Mul(x, y); }, a, b);
}

void multiplyTwice(const float* a, const float* b, const float* c, float* out, std::size_t count) {
    mapBlocks(
        out, count, [](auto, auto x, auto y, auto z) { return hn::Mul(hn::Mul(x, y), z); }, a, b, c);
}

void add(const float* a, const float* b, float* out, std::size_t count) {
    mapBlocks(
        out, count, [](auto, auto x, auto y) { return hn::Add(x, y); }, a, b);
}

void subtract(const float* a, const float* b, float* out, std::size_t count) {
    mapBlocks(
        out, count, [](auto, auto x, auto y) { return hn::Sub(x, y); }, a, b);
}

void addScaled(const float* a, const float* b, float gain, float* out, std::size_t count) {
    mapBlocks(
        out, count, [&](auto d, auto x, auto y) { return hn::MulAdd(y, hn::Set(d, gain), x); }, a, b);
}

void multiplyAdd(const float* a, const float* b, const float* c, float* out, std::size_t count) {
    mapBlocks(
        out, count, [](auto, auto x, auto y, auto z) { return hn::MulAdd(y, z, x); }, a, b, c);
}

void magnitude(const float* a, float* out, std::size_t count) {
    mapBlocks(
        out, count, [](auto, auto x) { return hn::Abs(x); }, a);
}

void maximum(const float* a, const float* b, float* out, std::size_t count) {
    mapBlocks(
        out, count, [](auto, auto x, auto y) { return hn::Max(x, y); }, a, b);
}

void clamp(const float* a, float low, float high, float* out, std::size_t count) {
    mapBlocks(
        out, count, [&](auto d, auto x) { return hn::Min(hn::Max(x, hn::Set(d, low)), hn::Set(d, high)); },
        a);
}

void crossfade(const float* a, const float* b, const float* c, float* out, std::size_t count) {
    mapBlocks(
        out, count, [](auto, auto x, auto y, auto z) { return hn::MulAdd(hn::Sub(y, x), z, x); }, a, b, c);
}

void moveToward(const float* a, const float* b, float amount, float* out, std::size_t count) {
    mapBlocks(
        out, count, [&](auto d, auto x, auto y) { return hn::MulAdd(hn::Sub(y, x), hn::Set(d, amount), x); },
        a, b);
}

void complement(const float* a, float* out, std::size_t count) {
    mapBlocks(
        out, count, [](auto d, auto x) { return hn::Sub(hn::Set(d, 1.0f), x); }, a);
}

void sanitize(const float* a, float* out, std::size_t count) {
    const auto door = [](auto d, auto x) {
        const auto limit = hn::Set(d, kLargestSample);
        const auto limited = hn::Min(hn::Max(x, hn::Neg(limit)), limit);
        // x - x is 0 for a finite x and NaN for any other.
        const auto finite = hn::Eq(hn::Sub(x, x), hn::Zero(d));
        return hn::IfThenElseZero(finite, limited);
    };
    mapBlocks(out, count, door, a);
}

void fill(float value, float* out, std::size_t count) {
    mapBlocks(out, count, [&](auto d) { return hn::Set(d, value); });
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vanta::kernel {

VANTA_KERNEL(scale);
VANTA_KERNEL(multiply);
VANTA_KERNEL(multiplyTwice);
VANTA_KERNEL(add);
VANTA_KERNEL(subtract);
VANTA_KERNEL(addScaled);
VANTA_KERNEL(multiplyAdd);
VANTA_KERNEL(magnitude);
VANTA_KERNEL(maximum);
VANTA_KERNEL(clamp);
VANTA_KERNEL(crossfade);
VANTA_KERNEL(moveToward);
VANTA_KERNEL(complement);
VANTA_KERNEL(sanitize);
VANTA_KERNEL(fill);

}  // namespace vanta::kernel
#endif
