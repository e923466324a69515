#include "wave/delay.hpp"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace vanta::wave {

namespace {

void copySamples(float* out, const float* in, int count) {
    std::memcpy(out, in, static_cast<std::size_t>(count) * sizeof(float));
}

}  // namespace

Delay::Delay(Environment& owner, int maxDelay, float fill)
    : Component(owner), fillValue_(fill), maxDelay_(maxDelay) {
    resizeRing();
    owner.addBlockListener(this);
}

Delay::~Delay() {
    environment().removeBlockListener(this);
}

void Delay::resizeRing() {
    const int needed = std::max(environment().maxBlockSize() + maxDelay_, 1);
    const int size = static_cast<int>(std::bit_ceil(static_cast<unsigned>(needed)));
    ring_.resize(size);
    mask_ = size - 1;
    // A ring that has shrunk must not claim more than it holds.
    written_ = std::min(written_, size);
    writePosition_ &= mask_;
}

void Delay::setMaxDelay(int samples) {
    if (samples == maxDelay_) return;
    maxDelay_ = samples;
    resizeRing();
    clear();
    delay_ = std::min(delay_, samples);
}

void Delay::write(const float* samples, int count) {
    const int first = std::min(count, ringSize() - writePosition_);
    copySamples(ring_.data() + writePosition_, samples, first);
    copySamples(ring_.data(), samples + first, count - first);
    advance(count);
}

void Delay::advance(int count) {
    writePosition_ = (writePosition_ + count) & mask_;
    if (written_ < ringSize()) written_ = std::min(written_ + count, ringSize());
}

void Delay::read(int delay, float* out, int count) const {
    const int start = (writePosition_ + ringSize() - delay - count) & mask_;
    const int first = std::min(count, ringSize() - start);
    if (start >= written_) {
        std::fill(out, out + count, fillValue_);
    } else {
        copySamples(out, ring_.data() + start, first);
    }
    copySamples(out + first, ring_.data(), count - first);
}

void Delay::readThrough(int delay, const float* in, float* out, int count) const {
    const int past = std::min(delay, count);
    if (past > 0) read(delay - past, out, past);
    copySamples(out + past, in, count - past);
}

void Delay::keep(const float* samples, int count) {
    const int skipped = std::max(count - maxDelay_, 0);
    advance(skipped);
    write(samples + skipped, count - skipped);
}

void DelayFilterBase::produce(BasicBlock<float>* block, int samples, int flags) {
    if (flags & Environment::kFrontRun) return;
    const std::int64_t position = environment().position();
    const bool followed = continues(expectedPosition_);
    expectedPosition_ = position + samples;
    if (position == environment().resetPosition() || !followed) {
        delay_.clear();
        constantRun_ = 0;
        streamInterrupted();
    }
    const BasicBlock<float>& in = source ? source->pull(samples) : environment().silentBlock();
    store(in, samples);
    followConstant(in, samples);
    process(in, block, samples, flags);
}

void DelayFilterBase::followConstant(const BasicBlock<float>& in, int samples) {
    if (!source || !source->holdsOneValue()) {
        constantRun_ = 0;
        return;
    }
    if (in[0] != constantValue_) {
        constantRun_ = 0;
        constantValue_ = in[0];
    }
    constantRun_ += samples;
}

void DelayFilterBase::extendIntoPast(float value) {
    delay_.setFill(value);
    if (constantRun_ > 0) constantRun_ += delay_.maxDelay();
}

void DelayFilter::streamInterrupted() {
    begins_ = true;
}

// A control value that stands still for longer than the delay leaves as it came in, flag and all.
void DelayFilter::process(const BasicBlock<float>& in, BasicBlock<float>* out, int samples, int) {
    if (std::exchange(begins_, false) && past_ == Past::FirstValue) extendIntoPast(in[0]);
    const int delay = delayLine().delay();
    if (source && (delay == 0 || holdsOneValue(delay, samples))) {
        publish(*source);
    } else {
        delayLine().readThrough(delay, in.data(), out->data(), samples);
    }
    delayLine().keep(in.data(), samples);
}

}  // namespace vanta::wave
