#include "dsp/sr/decimator.hpp"

namespace vanta::sr {

Decimator::Decimator(ConverterStyle& style)
    : FIRConverter(style, ConverterStyle::NarrowFull, ConverterStyle::WideFull) {
    update();
}

// A stage copies its input into its ring before it computes, so input and output may be the same block.
bool Decimator::convert(const float* in, float* out, int count) {
    if (stages().empty()) return false;
    for (std::size_t i = stages().size(); i-- > 0;) {
        float* target = i == 0 ? out : workBlock();
        stages()[i]->decimate(in, target, count << i);
        in = target;
    }
    return true;
}

}  // namespace vanta::sr
