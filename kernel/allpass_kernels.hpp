#pragma once

#include <array>

#include "kernel/kernel.hpp"

/// The inner loops of sample-rate conversion by two with recursive half-band filters: two branches of
/// first-order all-passes, y = c x + x1 - c y1, run side by side at the lower rate. Any count and alignment;
/// buffers must not overlap.
namespace vanta::kernel {

/// An all-pass in each branch, or in the first branch alone.
struct AllpassPair {
    float coefficient[2] = {0.0f, 0.0f};
    float x1[2] = {0.0f, 0.0f};
    float y1[2] = {0.0f, 0.0f};
};

/// Two branches: full pairs first, then, if the all-passes are odd in number, one in branch 0 alone.
struct AllpassBranches {
    static constexpr int kMaxPairs = 3;

    std::array<AllpassPair, kMaxPairs> pairs;
    int pairCount = 0;
    AllpassPair last;  ///< its branch 1 counts for nothing
    bool hasLast = false;
    float carried = 0.0f;  ///< the odd sample that `mergeBranches` has yet to use
};

/// Doubles the rate: out[2 i] = branch 0 of in[i], out[2 i + 1] = branch 1 of in[i].
extern const Kernel<void(const float* in, AllpassBranches& branches, float* out, std::size_t count)>
    splitBranches;
/// Halves the rate: out[i] = (branch 0 of in[2 i] + branch 1 of in[2 i - 1]) / 2.
extern const Kernel<void(const float* in, AllpassBranches& branches, float* out, std::size_t count)>
    mergeBranches;

}  // namespace vanta::kernel
