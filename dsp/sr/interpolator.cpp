#include "dsp/sr/interpolator.hpp"

#include "kernel/fir_kernels.hpp"

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

// The last stage, which has as much to store as all others together, stores peaks alone.
void Interpolator::convertToPeaks(const float* in, float* out, int count) {
    int pairs = count;
    for (std::size_t i = 0; i + 1 < stages().size(); ++i) {
        stages()[i]->interpolate(in, workBlock(), pairs);
        in = workBlock();
        pairs *= 2;
    }
    if (pairs == count) {
        stages().back()->interpolatePeaks(in, out, count);
        return;
    }
    stages().back()->interpolatePeaks(in, workBlock(), pairs);
    kernel::largestMagnitudeOfGroups(workBlock(), static_cast<std::size_t>(pairs / count), out,
                                     static_cast<std::size_t>(count));
}

}  // namespace vanta::sr
