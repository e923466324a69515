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
///
/// A version counts from a stream position that follows from that of the change alone, so that nobody hears
/// how the stream is cut into blocks.
class ConvolverKernel : public wave::Component {
public:
    virtual ~ConvolverKernel();

    const ConvolverPlan& plan() const { return plan_; }
    /// Brings the kernel to the end of this block. The first call in a tick does the work.
    VANTA_REALTIME void updateInTick(int samples);
    /// The version that counts at a position of the block that `updateInTick` was called for; null before the
    /// first one.
    KernelVersion* versionAt(std::int64_t position) const;
    /// What will count once nothing is written any more.
    const KernelVersion* newest() const { return published_; }
    /// Whether the last update found everything as it was, down to the inputs.
    bool atRest() const { return environment().restedSince(restEpoch_); }
    /// The longest time from a change of a kernel at rest until a Convolver lets nothing else be heard, in
    /// samples.
    int replacementSamples() const;
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
    /// Samples since the last jump or reset, up to which the kernel has been brought.
    std::int64_t time() const { return position_ - origin_; }
    /// Brings the kernel to the end of the block: `advance` for all of it, or piece by piece where something
    /// asks for a new version on the way.
    VANTA_REALTIME virtual void update(int samples) { advance(samples); }
    VANTA_REALTIME void advance(int samples);

private:
    class TransformTask;

    /// One is published and its predecessor is asked for until the block ends; one is written; a channel
    /// crossfades between two older ones, and one started at another time may do so between others.
    static constexpr std::size_t kVersions = 6;

    void start();
    void publishWritten();
    int fadeSamples() const;
    int shortestInterval() const;
    int spreadSamples() const;
    int firstDuration() const;
    int buildDuration() const;
    KernelVersion* freeVersion(std::int64_t now) const;

    const ConvolverPlan& plan_;
    std::array<std::unique_ptr<KernelVersion>, kVersions> versions_;
    KernelVersion* published_ = nullptr;
    KernelVersion* previous_ = nullptr;  ///< what was published before
    KernelVersion* writing_ = nullptr;
    wave::AlignedBuffer<float> zeros_;
    FFT::Work work_;  ///< of the largest stage; one transform runs at a time
    TaskSchedule schedule_;
    std::int64_t position_ = -1;   ///< up to which the kernel has been brought
    std::int64_t origin_ = 0;      ///< the stream position of the last jump or reset
    std::int64_t lastChange_ = 0;  ///< where the newest version began to count, or the origin
    float sampleRate_ = 0.0f;
    std::uint32_t stamp_ = 0;
    std::uint32_t restEpoch_ = 0;  ///< in which the kernel came to rest; 0 for none
    bool dirty_ = true;
};

}  // namespace vanta
