#include "dsp/sr/fir_stage.hpp"

#include <algorithm>

#include "kernel/fir_kernels.hpp"

namespace vanta::sr {

namespace {

constexpr std::size_t size(int count) {
    return static_cast<std::size_t>(count);
}

}  // namespace

FIRStage::FIRStage(int ratio, int longestLength)
    : past_(mostPast(ratio, longestLength)), longestLength_(longestLength), ratio_(ratio) {}

void FIRStage::prepare(const CoefficientSet& set) {
    set_ = &set;
    reach_ = reachOf(set, ratio_);
    reset();
}

int FIRStage::reachOf(const CoefficientSet& set, int ratio) {
    const bool branch = set.length % 2 == 0;
    const int delay = branch ? set.length : (set.length - 1) / 2;
    const int missing = stageDelay(branch ? 2 * set.length + 1 : set.length, ratio) - delay;
    // It reads late, so that its delay is a whole number of samples of the base rate. A branch reads the
    // lower of the two rates; the delay and the ratio are even.
    const int pad = branch ? missing / 2 : missing;
    return set.length - 1 + pad;
}

/// Puts the past in front of the input, and keeps what will be the past of the next. Returns the window of
/// the first output.
const float* FIRStage::continueIn(StageLine line, int count) {
    float* window = line.input() - reach_;
    std::copy_n(past_.data(), reach_, window);
    std::copy_n(window + count, reach_, past_.data());
    return window;
}

void FIRStage::interpolate(StageLine line, float* out, int count) {
    kernel::interpolateHalfBand(continueIn(line, count), set_->taps.data(), size(set_->length), out,
                                size(count));
}

void FIRStage::decimate(StageLine line, float* scratch, float* out, int count) {
    kernel::decimateHalfBand(continueIn(line, 2 * count), set_->taps.data(), size(set_->length), scratch, out,
                             size(count));
}

}  // namespace vanta::sr
