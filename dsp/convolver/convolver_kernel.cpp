#include "dsp/convolver/convolver_kernel.hpp"

#include <algorithm>
#include <limits>

#include "foundation/numbers.hpp"

namespace vanta {

/// Transforms one partition of the version that is being written.
class ConvolverKernel::TransformTask final : public FFTCalculateTask {
public:
    TransformTask(ConvolverKernel& owner, const ConvolverPlan& node, int stage, int partition)
        : FFTCalculateTask(node.fft(), owner.work_),
          kernel_(owner),
          node_(node),
          stage_(stage),
          partition_(partition) {}

    void prepare() override {
        KernelVersion& version = *kernel_.writing_;
        // Nobody multiplies by a partition that the kernel does not reach.
        if (partition_ >= node_.partitionsFor(version.length)) {
            skip();
        } else {
            // A partition's taps fill the first half of its window; the second half is the room in which
            // the products of the previous partition's input end.
            const int start = (partition_ + node_.skippedPartitions()) * node_.partitionSize();
            set(version.taps.data() + start, kernel_.zeros_.data(), version.spectrum(stage_, partition_));
        }
        FFTCalculateTask::prepare();
    }

private:
    ConvolverKernel& kernel_;
    const ConvolverPlan& node_;
    int stage_;
    int partition_;
};

ConvolverKernel::ConvolverKernel(wave::Environment& owner, const ConvolverPlan& plan)
    : Component(owner), plan_(plan), zeros_(plan.partitionSize()), work_(plan.fftSize()) {
    for (auto& version : versions_) version = std::make_unique<KernelVersion>(plan);
}

ConvolverKernel::~ConvolverKernel() = default;

void ConvolverKernel::addTransforms() {
    int stage = 0;
    for (const ConvolverPlan* node = &plan_; node; node = node->next(), ++stage) {
        for (int partition = 0; partition < node->partitionCount(); ++partition) {
            schedule_.add(std::make_unique<TransformTask>(*this, *node, stage, partition));
        }
    }
}

int ConvolverKernel::paddedLength(int length) const {
    const int size = plan_.partitionSize();
    return std::min((length + size - 1) / size * size, plan_.coveredLength());
}

void ConvolverKernel::updateInTick(int samples) {
    if (stamp_ == environment().tick()) return;
    stamp_ = environment().tick();
    const std::int64_t now = environment().position();
    if (sampleRate_ != environment().sampleRate()) {
        sampleRate_ = environment().sampleRate();
        dirty_ = true;
    }
    // Whoever reads may have rested: then nothing is missed.
    if (atRest()) position_ = now;
    if (position_ != now || now == environment().resetPosition()) {
        position_ = origin_ = lastChange_ = now;
        if (!schedule_.finished()) dirty_ = true;
    }
    const bool still = environment().readsOf([&] { update(samples); }).restForGood();
    restEpoch_ = still && !dirty_ && schedule_.finished() ? environment().epoch() : 0;
}

// A pass is not cut where blocks begin but where it ends: the next one starts there if it is waited for.
void ConvolverKernel::advance(int samples) {
    const std::int64_t end = position_ + samples;
    while (position_ < end) {
        if (dirty_ && (time() == 0 || schedule_.finished())) start();
        const std::int64_t stop = schedule_.finished() ? end : std::min(end, writing_->readyAt);
        const bool written = schedule_.advance(static_cast<int>(stop - position_));
        position_ = stop;
        if (written) publishWritten();
    }
}

void ConvolverKernel::start() {
    // A jump ends all reading: every channel starts over in the same tick.
    const bool jumped = time() == 0;
    KernelVersion* const version = freeVersion(jumped ? std::numeric_limits<std::int64_t>::max() : position_);
    if (!version) return;
    const int duration = jumped ? firstDuration() : buildDuration();
    writing_ = version;
    version->readyAt = position_ + duration;
    // Without latency the first kernel is asked for at once, and is there when the block has been taken in.
    version->countsFrom = jumped && plan_.latency() == 0 ? position_ : version->readyAt;
    schedule_.setDuration(duration);
    schedule_.restart();
    dirty_ = false;
}

// The kernel runs ahead of its readers by a block, of which the older version still counts for a part.
void ConvolverKernel::publishWritten() {
    previous_ = published_;
    published_ = writing_;
    lastChange_ = published_->countsFrom;
    if (previous_) previous_->lease(position_ + environment().maxBlockSize());
}

KernelVersion* ConvolverKernel::versionAt(std::int64_t position) const {
    return published_ && position >= published_->countsFrom ? published_ : previous_;
}

int ConvolverKernel::fadeSamples() const {
    return samplesInMs(ConvolverPlan::kFadeMs, environment().sampleRate());
}

// No faster than the crossfades can follow, which begin with a partition, and no two in one block.
int ConvolverKernel::shortestInterval() const {
    const int size = plan_.partitionSize();
    return std::max((fadeSamples() + size - 1) / size * size, environment().maxBlockSize());
}

int ConvolverKernel::spreadSamples() const {
    return std::max(plan_.partitionCount() / ConvolverPlan::kUpdateDivisor, 1) * plan_.partitionSize();
}

// After a jump the kernel stands when the innermost stage first multiplies.
int ConvolverKernel::firstDuration() const {
    return plan_.latency() > 0 ? plan_.innermost().partitionSize() : 1;
}

// In a running stream it takes its time.
int ConvolverKernel::buildDuration() const {
    const std::int64_t wait = shortestInterval() - (position_ - lastChange_);
    return static_cast<int>(std::max<std::int64_t>(spreadSamples(), wait));
}

// The input is looked at once a partition, the version taken where the next begins, heard one later, and by
// itself after the crossfade.
int ConvolverKernel::replacementSamples() const {
    return std::max(spreadSamples(), shortestInterval()) + 3 * plan_.partitionSize() + fadeSamples();
}

KernelVersion* ConvolverKernel::freeVersion(std::int64_t now) const {
    const auto found = std::find_if(versions_.begin(), versions_.end(), [&](const auto& version) {
        return version.get() != published_ && version->readyAt <= now;
    });
    return found == versions_.end() ? nullptr : found->get();
}

}  // namespace vanta
