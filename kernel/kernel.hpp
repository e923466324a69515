#pragma once

#include <cstddef>

namespace vanta::kernel {

/// A vector kernel, called like a function. Its body is compiled once for each instruction set, and a call
/// runs the one that suits the machine. Never allocates, not even the first; any thread.
template <typename Signature>
class Kernel;

template <typename Result, typename... Arguments>
class Kernel<Result(Arguments...)> {
public:
    using Function = Result (*)(Arguments...);

    constexpr explicit Kernel(Function function) : function_(function) {}

    Result operator()(Arguments... arguments) const { return function_(arguments...); }
    constexpr operator Function() const { return function_; }

private:
    Function function_;
};

/// The common shapes: one output sample from each sample of one, two or three blocks.
using UnaryKernel = Kernel<void(const float* a, float* out, std::size_t count)>;
using BinaryKernel = Kernel<void(const float* a, const float* b, float* out, std::size_t count)>;
using TernaryKernel =
    Kernel<void(const float* a, const float* b, const float* c, float* out, std::size_t count)>;

}  // namespace vanta::kernel

/// Defines a kernel that a header declares as `extern const Kernel<...> name`. Goes under HWY_ONCE, into the
/// namespace of the declaration; the body has the same name and goes into HWY_NAMESPACE.
#define VANTA_KERNEL(name) \
    HWY_EXPORT(name);      \
    constinit decltype(name) name([](auto... arguments) { return HWY_DYNAMIC_DISPATCH(name)(arguments...); })
