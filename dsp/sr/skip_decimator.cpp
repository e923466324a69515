#include "dsp/sr/skip_decimator.hpp"

#include "kernel/fir_kernels.hpp"

namespace vanta::sr {

bool SkipDecimator::convert(const float* in, float* out, int count) {
    if (style_.factor() < 2) return false;
    const auto factor = static_cast<std::size_t>(style_.factor());
    const auto samples = static_cast<std::size_t>(count);
    switch (mode) {
        case LargestMagnitude:
            kernel::largestMagnitudeOfGroups(in, factor, out, samples);
            break;
        case Smallest:
            kernel::smallestOfGroups(in, factor, out, samples);
            break;
        default:
            kernel::firstOfGroups(in, factor, out, samples);
            break;
    }
    return true;
}

}  // namespace vanta::sr
