#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "dsp/convolver/fft_task.hpp"
#include "dsp/convolver/input_half.hpp"
#include "dsp/convolver/kernel_transition.hpp"
#include "foundation/task_schedule.hpp"

namespace vanta {

/// A stretch of one channel's signal, which lies within one partition of the outermost stage.
struct ConvolverStretch {
    std::int64_t time;  ///< of its first sample, since the last restart
    int count;
    const float* in;
    bool constant;  ///< all of `in` is equal
    float* out;     ///< what the main version gives
    float* fade;    ///< what the fading version gives, over the first `fadeCount` samples
    int fadeCount;
    bool add;  ///< on top of what `out` and `fade` hold

    /// The part from sample `first` on.
    ConvolverStretch part(int first, int partCount) const;
};

/// All partitions of one size, for one channel. Input is collected in partitions of P samples. In the period
/// after a partition is complete its spectrum is computed, multiplied by the kernel's together with those of
/// earlier partitions, and transformed back, a piece with every block; the result plays in the period after
/// that. So a period costs the same throughout, and input comes out 2 P samples later.
///
/// A version is chosen for each period of output, and all of its products use that version: past input is
/// kept as spectra that belong to no version, so a new kernel counts for all of the past at once.
class ConvolverStage {
public:
    /// `stage` counts from the outermost one. All buffers are made here.
    ConvolverStage(const ConvolverPlan& node, int stage);

    /// Forgets the input. Time starts at 0.
    VANTA_REALTIME void reset();
    /// Stretches follow each other in time; between two of them may lie a rest, in which the input held one
    /// value for `restSamples()` and more.
    VANTA_REALTIME void process(const ConvolverStretch& stretch, const KernelTransition& transition);
    /// After a rest, before the first stretch: what plays now and next is what the versions make of its
    /// value.
    VANTA_REALTIME void wake(std::int64_t time, const KernelTransition& transition);
    /// How long the input must hold one value until nothing else is remembered.
    int restSamples() const { return (node_.partitionCount() + 4) * period_; }

private:
    static constexpr int kMain = 0;
    static constexpr int kFading = 1;

    /// The input spectrum of one partition; only its value if the whole window holds that.
    struct Slot {
        bool constant = true;
        float value = 0.0f;
    };

    /// One period of output.
    struct Result {
        explicit Result(int samples) : block(samples) {}
        bool constant = true;  ///< `value` throughout, and `block` is not written
        float value = 0.0f;
        wave::AlignedBuffer<float> block;  ///< the second half counts, times the transform's size
    };

    /// The output that one version gives: what plays now, and what is being computed.
    struct Row {
        FFTMultiplyTask* multiply;
        FFTCalculateInverseTask* inverse;
        std::array<Result, 2> results;
    };

    void turn(std::int64_t time, const KernelTransition& transition);
    void planTransform();
    void planRow(Row& row, const KernelVersion* version, Result& result);
    void play(const Row& row, int phase, float* out, int count, bool add) const;
    InputHalf& half(int age) { return halves_[static_cast<std::size_t>((half_ + age) % 3)]; }
    int slotIndex(int age) const { return (head_ + age) % node_.partitionCount(); }
    Result& computed(Row& row) { return row.results[static_cast<std::size_t>(1 - playing_)]; }

    const ConvolverPlan& node_;
    int stage_;
    int period_;
    FFT::Work work_;
    std::array<InputHalf, 3> halves_;  ///< being filled, complete, the one before
    std::vector<Slot> slots_;
    wave::AlignedBuffer<float> spectra_;  ///< a ring, one for each slot
    int half_ = 0;
    int head_ = 0;     ///< the newest slot; older ones follow
    int playing_ = 0;  ///< which result of a row plays
    TaskSchedule schedule_;
    FFTCalculateTask* transform_;
    std::array<Row, 2> rows_;
};

}  // namespace vanta
