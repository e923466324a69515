#include "dsp/sr/decimator.hpp"

#include <algorithm>

namespace vanta::sr {

Decimator::Decimator(ConverterStyle& style)
    : FIRConverter(style, ConverterStyle::NarrowFull, ConverterStyle::WideFull) {
    update();
}

// Each stage lays its output in front of the next one. The input is copied first, so input and output may be
// the same block.
bool Decimator::convert(const float* in, float* out, int count) {
    std::size_t i = stages().size();
    if (i == 0) return false;
    std::copy_n(in, count << i, lines().line(i - 1).input());
    while (i-- > 0) {
        float* target = i == 0 ? out : lines().line(i - 1).input();
        stages()[i]->decimate(lines().line(i), lines().scratch(), target, count << i);
    }
    return true;
}

}  // namespace vanta::sr
