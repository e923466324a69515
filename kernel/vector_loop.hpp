// The loop that every block kernel shares. Included once per instruction set, after hwy/highway.h, hence the
// guard that toggles with the target.
#if defined(VANTA_VECTOR_LOOP_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef VANTA_VECTOR_LOOP_HPP
#undef VANTA_VECTOR_LOOP_HPP
#else
#define VANTA_VECTOR_LOOP_HPP
#endif

#include <cstddef>

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {

/// Calls body(tag, i) for whole vectors from i = `begin` up to `end`, then for what is left sample by sample
/// with a tag of one lane, so that no kernel reads or writes past its block.
template <typename T = float, typename Body>
HWY_INLINE void vectorLoop(std::size_t begin, std::size_t end, Body&& body) {
    const hwy::HWY_NAMESPACE::ScalableTag<T> wide;
    const hwy::HWY_NAMESPACE::CappedTag<T, 1> single;
    const std::size_t lanes = hwy::HWY_NAMESPACE::Lanes(wide);
    std::size_t i = begin;
    for (; i + lanes <= end; i += lanes) body(wide, i);
    for (; i < end; ++i) body(single, i);
}

template <typename T = float, typename Body>
HWY_INLINE void vectorLoop(std::size_t count, Body&& body) {
    vectorLoop<T>(0, count, body);
}

/// out[i] = operation(tag, in[i]...) over blocks of any number of inputs.
template <typename Operation, typename... Blocks>
HWY_INLINE void mapBlocks(float* out, std::size_t count, Operation operation, const Blocks*... in) {
    namespace hn = hwy::HWY_NAMESPACE;
    vectorLoop(count,
               [&](auto d, std::size_t i) { hn::StoreU(operation(d, hn::LoadU(d, in + i)...), d, out + i); });
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#endif
