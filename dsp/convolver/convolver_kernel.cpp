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
    update(samples);
}

void ConvolverKernel::update(int samples) {
    const std::int64_t now = environment().position();
    const bool continuous = expectedPosition_ == now && now != environment().resetPosition();
    expectedPosition_ = now + samples;
    if (sampleRate_ != environment().sampleRate()) {
        sampleRate_ = environment().sampleRate();
        dirty_ = true;
    }
    if (!continuous && !schedule_.finished()) dirty_ = true;
    if (dirty_) start(now, continuous);
    if (schedule_.advance(samples)) {
        published_ = writing_;
        lastSwap_ = now;
    }
}

void ConvolverKernel::start(std::int64_t now, bool continuous) {
    // A jump ends all reading: every channel starts over in the same tick.
    KernelVersion* const version = freeVersion(continuous ? now : std::numeric_limits<std::int64_t>::max());
    if (!version || (continuous && !schedule_.finished())) return;
    const int duration = buildDuration(now, continuous);
    writing_ = version;
    version->readyAt = now + duration;
    schedule_.setDuration(duration);
    schedule_.restart();
    dirty_ = false;
}

// After a jump the kernel stands when the innermost stage first multiplies. In a running stream it takes its
// time, and never comes faster than the crossfades can follow.
int ConvolverKernel::buildDuration(std::int64_t now, bool continuous) const {
    if (!continuous) return plan_.latency() > 0 ? plan_.innermost().partitionSize() : 1;
    const int size = plan_.partitionSize();
    const int spread = std::max(plan_.partitionCount() / ConvolverPlan::kUpdateDivisor, 1) * size;
    const int fade = samplesInMs(ConvolverPlan::kFadeMs, sampleRate_);
    const std::int64_t afterFade = (fade + size - 1) / size * size - (now - lastSwap_);
    return static_cast<int>(std::max<std::int64_t>(spread, afterFade));
}

KernelVersion* ConvolverKernel::freeVersion(std::int64_t now) const {
    const auto found = std::find_if(versions_.begin(), versions_.end(), [&](const auto& version) {
        return version.get() != published_ && version->readyAt <= now;
    });
    return found == versions_.end() ? nullptr : found->get();
}

}  // namespace vanta
