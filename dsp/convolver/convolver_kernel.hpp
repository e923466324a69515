#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "dsp/convolver/fft_task.hpp"
#include "dsp/convolver/kernel_version.hpp"
#include "foundation/task_schedule.hpp"
#include "wave/producer.hpp"

namespace vanta {

/// What a Convolver convolves with: a kernel that changes while it is heard. Every change is computed into a
/// version of its own, taps and spectra, spread over the blocks; the finished version is published, and
/// whoever reads an older one keeps it as long as it needs. One kernel serves all channels.
class ConvolverKernel : public wave::Component {
public:
    virtual ~ConvolverKernel();

    const ConvolverPlan& plan() const { return plan_; }
    /// Brings the kernel to the end of this block. The first call in a tick does the work.
    VANTA_REALTIME void updateInTick(int samples);
    /// The newest complete version; null before the first one.
    KernelVersion* published() const { return published_; }
    /// Whether every version leaves a constant signal as it is.
    virtual bool unitSum() const { return false; }

protected:
    /// Computes the taps of a version, or a part of that work.
    class UpdateTask : public GranularTask {
    public:
        explicit UpdateTask(ConvolverKernel& owner) : kernel_(owner) {}

    protected:
        /// The version that this pass writes.
        KernelVersion& version() { return *kernel_.writing_; }

    private:
        ConvolverKernel& kernel_;
    };

    ConvolverKernel(wave::Environment& owner, const ConvolverPlan& plan);

    /// Set up by the constructor of a derived class: its own tasks in their order, then the transforms. The
    /// first task sets the version's `length`, at least 1, in `prepare`; together they fill its taps up to
    /// `taps.size()` or to `paddedLength(length)`, with zeros from `length` on.
    void addUpdateTask(std::unique_ptr<UpdateTask> task) { schedule_.add(std::move(task)); }
    void addTransforms();
    /// The end of the longest partition that a kernel of this length reaches.
    int paddedLength(int length) const;

    /// Asks for a new version.
    void setDirty() { dirty_ = true; }
    VANTA_REALTIME virtual void update(int samples);

private:
    class TransformTask;

    /// One is published, one is written and one fades out; channels that were started at different times can
    /// stand one version apart.
    static constexpr std::size_t kVersions = 4;

    void start(std::int64_t now, bool continuous);
    int buildDuration(std::int64_t now, bool continuous) const;
    KernelVersion* freeVersion(std::int64_t now) const;

    const ConvolverPlan& plan_;
    std::array<std::unique_ptr<KernelVersion>, kVersions> versions_;
    KernelVersion* published_ = nullptr;
    KernelVersion* writing_ = nullptr;
    wave::AlignedBuffer<float> zeros_;
    FFT::Work work_;  ///< of the largest stage; one transform runs at a time
    TaskSchedule schedule_;
    std::int64_t expectedPosition_ = -1;
    std::int64_t lastSwap_ = 0;
    float sampleRate_ = 0.0f;
    std::uint32_t stamp_ = 0;
    bool dirty_ = true;
};

}  // namespace vanta
