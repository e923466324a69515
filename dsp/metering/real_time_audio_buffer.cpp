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

LockFreeFifo::Item itemOf(int frame) {
    return LockFreeFifo::Item::of(frame, 0.0f);
}

}  // namespace

RealTimeAudioBuffer::Measurement::Measurement(RealTimeAudioBuffer& bufferOwner, int list, int channels)
    : enabled(this, true),
      owner(bufferOwner),
      index(list),
      inputs(static_cast<std::size_t>(channels), nullptr) {}

const float* RealTimeAudioBuffer::Measurement::block(int frame, int channel) const {
    if (frame < 0 || frame >= frameCount()) return nullptr;
    const auto storage = static_cast<std::size_t>(owner.held[static_cast<std::size_t>(frame)]);
    return owner.frames[storage].get() + (owner.channels * index + channel) * kBlockLength;
}

void RealTimeAudioBuffer::Measurement::propertyChanged(AbstractProperty&) {
    owner.updateSchedule();
}

RealTimeAudioBuffer::RealTimeAudioBuffer(wave::Environment& owner, int channelCount)
    : Producer(owner, wave::OwnBlock::No),
      stopWhenFull(nullptr, true),
      channels(channelCount),
      freeFrames(1024, kMaxFrames),
      finishedFrames(1024, kMaxFrames) {
    for (int i = 0; i < kListCount; ++i) {
        measurements[static_cast<std::size_t>(i)] = std::make_unique<Measurement>(*this, i, channels);
    }
    inputs.reserve(static_cast<std::size_t>(kListCount * channels));
    frames.reserve(kMaxFrames);
    held.reserve(kMaxFrames);
    fillPool();
    makeResettable();
    setScheduled(wave::Environment::kFrontGroup);
}

RealTimeAudioBuffer::~RealTimeAudioBuffer() = default;

int RealTimeAudioBuffer::framesWanted() const {
    const float rate = std::min(environment().sampleRate(), kHighestRate);
    const int forRate = static_cast<int>(std::lround(std::max(rate / kBudgetRate, 1.0f) * kFrameBudget));
    const int forHost = 2 * environment().hostBlockSamples() / kBlockLength + 2;
    return std::min(std::max(forRate, forHost), kMaxFrames);
}

void RealTimeAudioBuffer::fillPool() {
    const auto wanted = static_cast<std::size_t>(framesWanted());
    while (frames.size() < wanted) {
        frames.push_back(
            std::make_unique<float[]>(static_cast<std::size_t>(kListCount * channels * kBlockLength)));
        freeFrames.push(itemOf(static_cast<int>(frames.size()) - 1));
    }
}

void RealTimeAudioBuffer::reset() {
    LockFreeFifo::Item item{};
    while (finishedFrames.pop(item)) freeFrames.push(item);
    if (currentFrame >= 0) freeFrames.push(itemOf(currentFrame));
    currentFrame = -1;
    fillPosition = 0;
    fillPool();
}

void RealTimeAudioBuffer::updateSchedule() {
    setActive(std::any_of(measurements.begin(), measurements.end(),
                          [](const auto& m) { return m->enabled.value(); }));
}

void RealTimeAudioBuffer::collectInputs(int samples) {
    inputs.clear();
    for (const auto& measurement : measurements) {
        for (wave::Producer* input : measurement->inputs) {
            inputs.push_back(input ? input->pullData(samples) : environment().silentBlock().data());
        }
    }
}

bool RealTimeAudioBuffer::takeFrame() {
    LockFreeFifo::Item item{};
    if (!freeFrames.pop(item)) {
        if (stopWhenFull) {
            overflow.store(true, std::memory_order_release);
            return false;
        }
        if (!finishedFrames.pop(item)) return false;
    }
    currentFrame = item.index();
    return true;
}

void RealTimeAudioBuffer::copyInputs(int from, int count) {
    float* frame = frames[static_cast<std::size_t>(currentFrame)].get() + fillPosition;
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        std::memcpy(frame + i * kBlockLength, inputs[i] + from,
                    static_cast<std::size_t>(count) * sizeof(float));
    }
}

void RealTimeAudioBuffer::produce(wave::BasicBlock<float>*, int samples, int) {
    publishSilence();
    if (overflow.load(std::memory_order_acquire)) return;
    collectInputs(samples);
    for (int done = 0; done < samples;) {
        if (currentFrame < 0 && !takeFrame()) return;
        const int count = std::min(kBlockLength - fillPosition, samples - done);
        copyInputs(done, count);
        fillPosition += count;
        done += count;
        if (fillPosition < kBlockLength) continue;
        finishedFrames.push(itemOf(currentFrame));
        currentFrame = -1;
        fillPosition = 0;
    }
}

void RealTimeAudioBuffer::lock() {
    if (lockCount++ == 0) drain();
}

void RealTimeAudioBuffer::drain() {
    // What was recorded before a gap is of no use: the reader is promised one stretch.
    const bool dropped = overflow.load(std::memory_order_acquire);
    LockFreeFifo::Item item{};
    while (finishedFrames.pop(item)) {
        if (dropped) {
            freeFrames.push(item);
        } else {
            held.push_back(item.index());
        }
    }
    overflow.store(false, std::memory_order_release);
}

void RealTimeAudioBuffer::unlock() {
    if (--lockCount != 0) return;
    for (std::size_t i = held.size(); i-- > 0;) freeFrames.push(itemOf(held[i]));
    held.clear();
}

}  // namespace vanta
