#include "dsp/metering/real_time_audio_buffer.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vanta {

namespace {

/// Frames up to 96 kHz; more in proportion, up to eight times as many.
constexpr int kFrameBudget = 32;
constexpr float kBudgetRate = 96000.0f;
constexpr float kHighestRate = 768000.0f;
constexpr int kMaxFrames = 4096;

LockFreeFifo::Item itemOf(int frame, std::uint32_t number = 0) {
    return {static_cast<std::uint32_t>(frame), number};
}

}  // namespace

RealTimeAudioBuffer::Measurement::Measurement(RealTimeAudioBuffer& owner, int list, int channels)
    : enabled(this, true),
      owner_(owner),
      index_(list),
      inputs_(static_cast<std::size_t>(channels), nullptr) {}

const float* RealTimeAudioBuffer::Measurement::block(int frame, int channel) const {
    if (frame < 0 || frame >= frameCount()) return nullptr;
    const auto storage = static_cast<std::size_t>(owner_.held_[static_cast<std::size_t>(frame)]);
    return owner_.frames_[storage].get() + (owner_.channels_ * index_ + channel) * kBlockLength;
}

void RealTimeAudioBuffer::Measurement::propertyChanged(AbstractProperty&) {
    owner_.updateSchedule();
}

RealTimeAudioBuffer::RealTimeAudioBuffer(wave::Environment& owner, int channelCount)
    : Producer(owner, wave::OwnBlock::No),
      stopWhenFull(nullptr, true),
      channels_(channelCount),
      freeFrames_(1024, kMaxFrames),
      finishedFrames_(1024, kMaxFrames) {
    for (int i = 0; i < kListCount; ++i) {
        measurements_[static_cast<std::size_t>(i)] = std::make_unique<Measurement>(*this, i, channels_);
    }
    inputs_.reserve(static_cast<std::size_t>(kListCount * channels_));
    frames_.reserve(kMaxFrames);
    held_.reserve(kMaxFrames);
    prepare();
    makeResettable();
    setScheduled(wave::Environment::kFrontGroup);
}

RealTimeAudioBuffer::~RealTimeAudioBuffer() = default;

void RealTimeAudioBuffer::prepare() {
    const float rate = std::min(environment().sampleRate(), kHighestRate);
    framesForRate_ = static_cast<int>(std::lround(std::max(rate / kBudgetRate, 1.0f) * kFrameBudget));
    growPool();
}

void RealTimeAudioBuffer::setLargestHostBlock(int samples) {
    environment().expectHostBlocks(samples);
    growPool();
}

// The vector has its final capacity, so that the audio thread may go on using the frames that are there.
void RealTimeAudioBuffer::growPool() {
    const std::lock_guard lock(growing_);
    const int longest = std::min(environment().longestHostBlock(), kMaxFrames * kBlockLength);
    const int forHost = 2 * longest / kBlockLength + 2;
    const auto wanted = static_cast<std::size_t>(std::clamp(forHost, framesForRate_.load(), kMaxFrames));
    while (frames_.size() < wanted) {
        frames_.push_back(
            std::make_unique<float[]>(static_cast<std::size_t>(kListCount * channels_ * kBlockLength)));
        freeFrames_.push(itemOf(static_cast<int>(frames_.size()) - 1));
    }
}

void RealTimeAudioBuffer::reset() {
    LockFreeFifo::Item item{};
    while (finishedFrames_.pop(item)) freeFrames_.push(item);
    if (currentFrame_ >= 0) freeFrames_.push(itemOf(currentFrame_));
    currentFrame_ = -1;
    fillPosition_ = 0;
    ++frameNumber_;
}

void RealTimeAudioBuffer::updateSchedule() {
    setActive(std::any_of(measurements_.begin(), measurements_.end(),
                          [](const auto& m) { return m->enabled.value(); }));
}

void RealTimeAudioBuffer::collectInputs(int samples) {
    inputs_.clear();
    for (const auto& measurement : measurements_) {
        for (wave::Producer* input : measurement->inputs_) {
            inputs_.push_back(input ? input->pullData(samples) : environment().silentBlock().data());
        }
    }
}

bool RealTimeAudioBuffer::takeFrame() {
    LockFreeFifo::Item item{};
    if (!freeFrames_.pop(item)) {
        if (stopWhenFull) {
            ++frameNumber_;
            overflow_.store(true, std::memory_order_release);
            return false;
        }
        if (!finishedFrames_.pop(item)) return false;
    }
    currentFrame_ = item.index();
    return true;
}

void RealTimeAudioBuffer::copyInputs(int from, int count) {
    float* frame = frames_[static_cast<std::size_t>(currentFrame_)].get() + fillPosition_;
    for (std::size_t i = 0; i < inputs_.size(); ++i) {
        std::memcpy(frame + i * kBlockLength, inputs_[i] + from,
                    static_cast<std::size_t>(count) * sizeof(float));
    }
}

void RealTimeAudioBuffer::produce(wave::BasicBlock<float>*, int samples, int) {
    publishSilence();
    if (overflow_.load(std::memory_order_acquire)) return;
    collectInputs(samples);
    for (int done = 0; done < samples;) {
        if (currentFrame_ < 0 && !takeFrame()) return;
        const int count = std::min(kBlockLength - fillPosition_, samples - done);
        copyInputs(done, count);
        fillPosition_ += count;
        done += count;
        if (fillPosition_ < kBlockLength) continue;
        finishedFrames_.push(itemOf(currentFrame_, frameNumber_++));
        currentFrame_ = -1;
        fillPosition_ = 0;
    }
}

void RealTimeAudioBuffer::lock() {
    if (lockCount_++ == 0) drain();
}

// What was recorded before a gap is of no use: the reader is promised one stretch. From the exchange on the
// audio thread records again; should it stop once more meanwhile, the next visit finds that.
void RealTimeAudioBuffer::drain() {
    const bool dropped = overflow_.exchange(false, std::memory_order_acq_rel);
    LockFreeFifo::Item item{};
    while (finishedFrames_.pop(item)) {
        if (dropped) {
            freeFrames_.push(item);
            continue;
        }
        if (item.second != nextNumber_) giveBack();
        held_.push_back(item.index());
        nextNumber_ = item.second + 1;
    }
}

void RealTimeAudioBuffer::giveBack() {
    for (std::size_t i = held_.size(); i-- > 0;) freeFrames_.push(itemOf(held_[i]));
    held_.clear();
}

void RealTimeAudioBuffer::unlock() {
    if (--lockCount_ != 0) return;
    giveBack();
    growPool();
}

}  // namespace vanta
