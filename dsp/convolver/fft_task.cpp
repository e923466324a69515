#include "dsp/convolver/fft_task.hpp"

#include <algorithm>

namespace vanta {

// Pairs are taken in groups that share one reading and writing of the sum.
void FFTMultiplyTask::run(int firstGrain, int count) {
    constexpr auto kGroup = static_cast<int>(kernel::kSpectrumPairs);
    constexpr int kStepBins = 16;
    const int half = fft_.size() / 2;
    const int pairCount = static_cast<int>(pairs_.size());
    const int endGrain = firstGrain + count;
    for (int first = firstGrain / (kGroup * fft_.size()) * kGroup; first < pairCount; first += kGroup) {
        const int start = first * fft_.size();
        if (start >= endGrain) break;
        const int group = std::min(kGroup, pairCount - first);
        const int cost = group * fft_.size();
        const auto binAt = [&](int grain) {
            if (grain >= cost) return half;
            return std::max(grain, 0) / (2 * group) / kStepBins * kStepBins;
        };
        const int begin = binAt(firstGrain - start), end = binAt(endGrain - start);
        if (begin >= end) continue;
        kernel::multiplySpectra(pairs_.data() + first, static_cast<std::size_t>(group), sum_.data(),
                                static_cast<std::size_t>(half), static_cast<std::size_t>(begin),
                                static_cast<std::size_t>(end), first > 0);
    }
}

}  // namespace vanta
