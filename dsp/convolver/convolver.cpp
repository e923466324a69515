#include "dsp/convolver/convolver.hpp"

#include <algorithm>

#include "foundation/numbers.hpp"
#include "kernel/convolver_kernels.hpp"

namespace vanta {

Convolver::Convolver(wave::Environment& owner, Kernel& kernel)
    : Filter(owner),
      kernel_(kernel),
      plan_(kernel.plan()),
      period_(plan_.partitionSize()),
      delayed_(owner),
      fade_(owner) {
    int stage = 0;
    for (const ConvolverPlan* node = &plan_; node; node = node->next(), ++stage) {
        if (node->partitionCount() == 0) continue;
        stages_.push_back(std::make_unique<ConvolverStage>(*node, stage));
        restSamples_ = std::max(restSamples_, stages_.back()->restSamples());
    }
    if (plan_.latency() == 0) {
        direct_ = std::make_unique<DirectFir>(plan_.innermost().fftSize(), plan_.innermost().fftSize());
        restSamples_ = std::max(restSamples_, plan_.innermost().fftSize());
    } else if (plan_.next()) {
        delay_ = std::make_unique<wave::Delay>(owner, plan_.latency());
    }
}

void Convolver::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples, int) {
    kernel_.updateInTick(samples);
    environment().noteRead(kernel_.atRest());
    const std::int64_t position = environment().position();
    if (!stream_.follows(*this, samples) || position == environment().resetPosition()) {
        restart(position);
    }
    std::int64_t time = position - origin_;
    const bool rest = atRest(in, samples);
    if (!rest && resting_) wake(time);
    const float* delayed = rest ? nullptr : delayInput(in, samples);
    int count = 0;
    for (int done = 0; done < samples; done += count, time += count) {
        count = std::min(samples - done, samplesToBoundary(time));
        chooseVersion(time);
        if (rest) continue;
        runStages({time, count, in.data() + done, constant_, out->data() + done, fade_.data(), 0, false},
                  delayed + done);
    }
    if (rest) publish(in, kConstant);
}

void Convolver::restart(std::int64_t position) {
    origin_ = position;
    transition_ = {};
    for (auto& stage : stages_) stage->reset();
    if (direct_) direct_->reset();
    if (delay_) delay_->clear();
    // What came before counts as silence without end.
    heldValue_ = 0.0f;
    heldSamples_ = delayedSamples_ = restSamples_;
    resting_ = false;
}

// Follows how long the input has been constant. True once no stage remembers anything else.
bool Convolver::atRest(const wave::BasicBlock<float>& in, int samples) {
    constant_ = source->isConstant() || kernel::allEqual(in.data(), static_cast<std::size_t>(samples));
    if (!constant_ || in[0] != heldValue_) {
        heldValue_ = in[0];
        heldSamples_ = delayedSamples_ = 0;
    }
    const bool rest = constant_ && kernel_.unitSum() && heldSamples_ >= restSamples_ &&
                      (!delay_ || delayedSamples_ >= restSamples_);
    delayedConstant_ = constant_ && heldSamples_ >= plan_.latency();
    if (constant_) heldSamples_ += samples;
    if (delayedConstant_) delayedSamples_ += samples;
    if (rest) {
        resting_ = true;
        restValue_ = in[0];
    }
    return rest;
}

bool Convolver::settled() const {
    return resting_ && transition_.to == kernel_.newest() && !transition_.from;
}

// The stages need not know how long the rest was: all that they remember is its value.
void Convolver::wake(std::int64_t time) {
    resting_ = false;
    for (auto& stage : stages_) stage->wake(time, transition_);
    if (!delay_) return;
    const int piece = std::min(plan_.latency(), delayed_.size());
    std::fill_n(delayed_.data(), piece, restValue_);
    for (int written = 0; written < plan_.latency(); written += piece) delay_->write(delayed_.data(), piece);
}

const float* Convolver::delayInput(const wave::BasicBlock<float>& in, int samples) {
    if (!delay_) return in.data();
    delay_->write(in.data(), samples);
    delay_->read(plan_.latency(), delayed_.data(), samples);
    return delayed_.data();
}

// In the first period also those of the innermost stage, where the first version is taken.
int Convolver::samplesToBoundary(std::int64_t time) const {
    const int step = time < period_ ? plan_.innermost().partitionSize() : period_;
    return step - static_cast<int>(time & (step - 1));
}

// Until the first partition is complete no version has been heard. Later a new one is taken where a partition
// of the outermost stage begins, one partition ahead, which is how long its output takes to compute. A rest
// changes nothing in this: whether a block counts as one depends on where it ends.
void Convolver::chooseVersion(std::int64_t time) {
    const int unheard = direct_ ? 0 : plan_.innermost().partitionSize();
    const bool boundary = (time & (period_ - 1)) == 0;
    KernelVersion* const newest = kernel_.versionAt(origin_ + time);
    if (time <= unheard || !transition_.to) {
        transition_ = {nullptr, newest, 0, 0};
    } else if (!boundary) {
        return;
    } else if (transition_.over(time)) {
        transition_.from = nullptr;
        if (newest != transition_.to) {
            transition_ = {transition_.to, newest, time + period_,
                           samplesInMs(ConvolverPlan::kFadeMs, environment().sampleRate())};
        }
    }
    extendLeases(time);
}

// Up to the next boundary the stages read what they read now, and the kernel runs ahead of them by a block.
void Convolver::extendLeases(std::int64_t time) {
    const std::int64_t until = origin_ + time + period_ + environment().maxBlockSize();
    if (transition_.to) transition_.to->lease(until);
    if (transition_.from) transition_.from->lease(until);
}

void Convolver::runStages(ConvolverStretch stretch, const float* delayed) {
    if (transition_.fading(stretch.time)) {
        const std::int64_t left = transition_.start + transition_.length - stretch.time;
        stretch.fadeCount = static_cast<int>(std::min<std::int64_t>(left, stretch.count));
    }
    if (direct_) {
        direct_->process(stretch, transition_);
        stretch.add = true;
    }
    for (auto stage = stages_.rbegin(); stage != stages_.rend(); ++stage) {
        (*stage)->process(stretch, transition_);
        stretch.add = true;
        stretch.in = delayed;
        if (delay_) stretch.constant = delayedConstant_;
    }
    if (stretch.fadeCount == 0) return;
    kernel::crossfadeStretch(stretch.fade, stretch.out, static_cast<float>(stretch.time - transition_.start),
                             static_cast<float>(transition_.length),
                             static_cast<std::size_t>(stretch.fadeCount));
}

}  // namespace vanta
