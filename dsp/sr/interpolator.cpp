#include "dsp/sr/interpolator.hpp"

#include <algorithm>

#include "kernel/fir_kernels.hpp"

namespace vanta::sr {

Interpolator::Interpolator(ConverterStyle& style)
    : FIRConverter(style, ConverterStyle::NarrowBranch, ConverterStyle::WideBranch) {
    update();
}

// The input is copied first, so input and output may be the same block.
bool Interpolator::convert(const float* in, float* out, int count) {
    if (stages().empty()) return false;
    const int pairs = convertUpToLast(in, count);
    const std::size_t last = stages().size() - 1;
    stages()[last]->interpolate(lines().line(last), out, pairs);
    return true;
}

// The last stage, which has as much to store as all others together, stores peaks alone.
void Interpolator::convertToPeaks(const float* in, float* out, int count) {
    const int pairs = convertUpToLast(in, count);
    const std::size_t last = stages().size() - 1;
    if (pairs == count) {
        stages()[last]->interpolatePeaks(lines().line(last), out, count);
        return;
    }
    float* peaks = lines().line(last + 1).input();
    stages()[last]->interpolatePeaks(lines().line(last), peaks, pairs);
    kernel::largestMagnitudeOfGroups(peaks, static_cast<std::size_t>(pairs / count), out,
                                     static_cast<std::size_t>(count));
}

/// Each stage lays its output in front of the next one. Returns how many samples the last one is to read.
int Interpolator::convertUpToLast(const float* in, int count) {
    std::copy_n(in, count, lines().line(0).input());
    for (std::size_t i = 0; i + 1 < stages().size(); ++i) {
        stages()[i]->interpolate(lines().line(i), lines().line(i + 1).input(), count);
        count *= 2;
    }
    return count;
}

}  // namespace vanta::sr
