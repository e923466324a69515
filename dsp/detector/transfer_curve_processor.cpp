#include "dsp/detector/transfer_curve_processor.hpp"

#include "foundation/numbers.hpp"
#include "kernel/level_math.hpp"
#include "kernel/mix.hpp"

namespace vanta {

void TransferCurveProcessor::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out,
                                     int samples, int) {
    const float* bend = strength.pullData(samples);
    const bool steady = strength.isConstant();
    const bool constant = steady && source->isConstant();
    const auto count = static_cast<std::size_t>(samples);
    const std::size_t work = constant ? 1 : count;
    if (function != Power) {
        kernel::exponentialCurve(in.data(), bend, out->data(), work);
    } else if (steady && nearlyEqual(bend[0], 0.3f)) {
        kernel::powerFiveAndHalf(in.data(), out->data(), work);
    } else {
        kernel::powerCurve(in.data(), bend, out->data(), work);
    }
    if (!constant) return;
    kernel::fill((*out)[0], out->data(), count);
    setConstant(true);
}

}  // namespace vanta
