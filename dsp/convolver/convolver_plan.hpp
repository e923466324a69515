#pragma once

#include <memory>

#include "dsp/convolver/fft.hpp"

namespace vanta {

/// How a kernel is cut into partitions: a chain of stages from the longest partitions to the shortest, each
/// of which leaves the beginning of the kernel to the next one. Immutable, shared by kernels and convolvers,
/// which it must outlive.
///
/// The scheme is the non-uniform partitioned overlap-save convolution of W. G. Gardner, "Efficient
/// Convolution without Input-Output Delay", J. Audio Eng. Soc. 43 (1995), with partitions that grow by a
/// factor of 8.
class ConvolverPlan {
public:
    /// Crossfade between two kernels, ms.
    static constexpr double kFadeMs = 20.0;
    /// A kernel is rebuilt over at least this fraction of its partitions.
    static constexpr int kUpdateDivisor = 4;

    /// For kernels of up to `maxLength` taps. `base` is the transform size of the innermost stage and the
    /// latency of the whole, a power of two from 32 on; below 1 there is no latency, and a direct filter
    /// takes the first taps. Throws std::invalid_argument for other values or a `maxLength` below 1.
    ConvolverPlan(int maxLength, int base);

    /// Samples.
    int latency() const { return latency_; }
    const FFT& fft() const { return fft_; }
    int fftSize() const { return fft_.size(); }
    int maxLength() const { return maxLength_; }
    /// Half the transform size: taps in a partition, and samples between two transforms.
    int partitionSize() const { return fft_.size() / 2; }
    int partitionCount() const { return partitionCount_; }
    /// How many partitions at the kernel's beginning are left to the next stage or the direct filter.
    int skippedPartitions() const { return skipped_; }
    /// Taps that this stage and those below it cover.
    int coveredLength() const { return (partitionCount_ + skipped_) * partitionSize(); }
    /// How many partitions of this stage a kernel of `length` taps reaches.
    int partitionsFor(int length) const;
    /// The stage with shorter partitions, or null.
    const ConvolverPlan* next() const { return next_.get(); }
    /// The stage with the shortest partitions.
    const ConvolverPlan& innermost() const { return next_ ? next_->innermost() : *this; }
    int stageCount() const { return 1 + (next_ ? next_->stageCount() : 0); }

private:
    int maxLength_;
    FFT fft_;
    std::unique_ptr<ConvolverPlan> next_;
    int latency_;
    int skipped_;
    int partitionCount_;
};

}  // namespace vanta
