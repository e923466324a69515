#pragma once

#include <hwy/targets.h>

#include <cstdint>

namespace vanta::test {

/// Calls `body(name)` once for each instruction set that this machine has and the kernels are compiled for,
/// with the kernels switched to it; "EMU128" is the plain code for machines without any of them.
template <typename Body>
void forEachInstructionSet(Body&& body) {
    const std::int64_t compiled[] = {HWY_AVX3, HWY_AVX2, HWY_SSE4, HWY_EMU128};
    const std::int64_t here = hwy::SupportedTargets() | HWY_EMU128;
    for (const std::int64_t target : compiled) {
        if (!(target & here)) continue;
        hwy::GetChosenTarget().Update(target);
        body(hwy::TargetName(target));
    }
    // The next kernel call looks for the best set again.
    hwy::GetChosenTarget().DeInit();
}

}  // namespace vanta::test
