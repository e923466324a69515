#include "dsp/sr/interpolator.hpp"

#include <algorithm>

namespace vanta::sr {

Interpolator::Interpolator(ConverterStyle& style)
    : FIRConverter(style, ConverterStyle::NarrowBranch, ConverterStyle::WideBranch) {
    update();
}

// The input is copied first, so input and output may be the same block. Each stage lays its output in front
// of the next one.
bool Interpolator::convert(const float* in, float* out, int count) {
    if (stages().empty()) return false;
    std::copy_n(in, count, lines().line(0).input());
    const std::size_t last = stages().size() - 1;
    for (std::size_t i = 0; i < last; ++i) {
        stages()[i]->interpolate(lines().line(i), lines().line(i + 1).input(), count);
        count *= 2;
    }
    stages()[last]->interpolate(lines().line(last), out, count);
    return true;
}

}  // namespace vanta::sr
