#include "dsp/convolver/convolver_plan.hpp"

#include <algorithm>
#include <cstdint>
#include <stdexcept>

namespace vanta {

namespace {

constexpr int kBaseWithoutLatency = 64;
constexpr int kGrowth = 8;
constexpr int kLongestLength = 1 << 24;

int innermostSize(int base) {
    return base < 1 ? kBaseWithoutLatency : base;
}

// A stage takes kernels of up to 32 of its transforms; what is longer gets a stage of its own around it.
int transformSize(int maxLength, int base) {
    if (maxLength < 1 || maxLength > kLongestLength) {
        throw std::invalid_argument("ConvolverPlan: the kernel length is out of range");
    }
    std::int64_t size = innermostSize(base);
    while (maxLength >= 32 * size) size *= kGrowth;
    return static_cast<int>(std::min<std::int64_t>(size, 2 * FFT::kLargest));
}

}  // namespace

ConvolverPlan::ConvolverPlan(int maxLength, int base)
    : maxLength_(maxLength), fft_(transformSize(maxLength, base)) {
    const bool outer = fft_.size() > innermostSize(base);
    if (outer) next_ = std::make_unique<ConvolverPlan>(fft_.size(), base);
    latency_ = outer ? next_->latency() : base < 1 ? 0 : fft_.size();
    skipped_ = outer || latency_ == 0 ? 2 : 0;
    const int partitions = (maxLength + partitionSize() - 1) / partitionSize();
    partitionCount_ = std::max(partitions - skipped_, 0);
}

int ConvolverPlan::partitionsFor(int length) const {
    const int reached = (length + partitionSize() - 1) / partitionSize() - skipped_;
    return std::clamp(reached, 0, partitionCount_);
}

}  // namespace vanta
