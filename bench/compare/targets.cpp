#include "bench/compare/targets.hpp"

#include <hwy/targets.h>

namespace vanta::bench {

std::vector<Target> targetsHere() {
    std::vector<Target> here;
    for (const Target& target : {Target{"avx512", "AVX-512", HWY_AVX3}, Target{"avx2", "AVX2", HWY_AVX2},
                                 Target{"sse4", "SSE4", HWY_SSE4}, Target{"plain", "plain", HWY_EMU128}}) {
        if (target.bit & (hwy::SupportedTargets() | HWY_EMU128)) here.push_back(target);
    }
    return here;
}

void use(const Target& target) {
    hwy::GetChosenTarget().Update(target.bit);
}

}  // namespace vanta::bench
