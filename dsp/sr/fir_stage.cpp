#include "dsp/sr/fir_stage.hpp"

#include "kernel/fir_kernels.hpp"

namespace vanta::sr {

namespace {

constexpr std::size_t size(int count) {
    return static_cast<std::size_t>(count);
}

}  // namespace

// The pad is below the ratio.
FIRStage::FIRStage(int ratio, int longestLength, int maxBlock)
    : ring_(longestLength - 1 + ratio + maxBlock * ratio),
      scratch_(static_cast<int>(kernel::decimatorScratch(size(longestLength)))),
      longestLength_(longestLength),
      ratio_(ratio) {}

void FIRStage::prepare(const CoefficientSet& set) {
    set_ = &set;
    const bool branch = set.length % 2 == 0;
    const int delay = branch ? set.length : (set.length - 1) / 2;
    const int missing = stageDelay(branch ? 2 * set.length + 1 : set.length, ratio_) - delay;
    // A branch reads the lower of the two rates; the delay and the ratio are even.
    pad_ = branch ? missing / 2 : missing;
    reset();
}

const float* FIRStage::write(const float* in, int count) {
    ring_.write(in, count);
    return ring_.newest(set_->length - 1 + count, pad_);
}

void FIRStage::interpolate(const float* in, float* out, int count) {
    kernel::interpolateHalfBand(write(in, count), set_->taps.data(), size(set_->length), out, size(count));
}

void FIRStage::interpolatePeaks(const float* in, float* out, int count) {
    kernel::peaksOfHalfBand(write(in, count), set_->taps.data(), size(set_->length), out, size(count));
}

void FIRStage::decimate(const float* in, float* out, int count) {
    kernel::decimateHalfBand(write(in, 2 * count), set_->taps.data(), size(set_->length), scratch_.data(),
                             out, size(count));
}

}  // namespace vanta::sr
