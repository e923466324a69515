#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vanta::bench {

/// An instruction set that our kernels are compiled for.
struct Target {
    std::string_view name;   ///< as users write it: "avx512", "avx2", "sse4", "plain"
    std::string_view title;  ///< as tables write it
    std::int64_t bit = 0;    ///< of Highway
};

/// Those that this machine has, the best first. "plain" is the code for machines without any of them.
std::vector<Target> targetsHere();
/// Switches every kernel to it from the next call on. What others bring along chooses for itself.
void use(const Target& target);

}  // namespace vanta::bench
