#include "dsp/sr/interpolator.hpp"

namespace vanta::sr {

Interpolator::Interpolator(ConverterStyle& style)
    : FIRConverter(style, ConverterStyle::NarrowBranch, ConverterStyle::WideBranch) {
    update();
}

// A stage copies its input into its ring before it computes, so input and output may be the same block.
bool Interpolator::convert(const float* in, float* out, int count) {
    if (stages().empty()) return false;
    const FIRStage* last = stages().back().get();
    for (auto& stage : stages()) {
        float* target = stage.get() == last ? out : workBlock();
        stage->interpolate(in, target, count);
        in = target;
        count *= 2;
    }
    return true;
}

}  // namespace vanta::sr
