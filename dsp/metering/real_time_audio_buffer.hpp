#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <vector>

#include "foundation/lock_free_fifo.hpp"
#include "foundation/property.hpp"
#include "wave/level_source.hpp"
#include "wave/producer.hpp"

namespace vanta {

/// Carries whole streams from the audio thread to a display without a lock in the audio path: frames of 256
/// samples go from a pool through a queue to the reader and back. A reader that is too slow stops the
/// recording until it comes by, and what was pending is dropped, so that it always gets one unbroken stretch.
///
/// One audio thread, one reader.
class RealTimeAudioBuffer final : public wave::Producer {
public:
    static constexpr int kBlockLength = 256;
    static constexpr int kListCount = 3;

    class Measurement;

    RealTimeAudioBuffer(wave::Environment& owner, int channelCount);
    ~RealTimeAudioBuffer() override;

    Measurement& measurement(int list) { return *measurements[static_cast<std::size_t>(list)]; }

    /// Gives all frames but the reader's back, and sizes the pool for the sample rate and the host's blocks.
    /// Allocates when the pool grows.
    void reset() override;

    Property<bool> stopWhenFull;  ///< false: with no free frame the oldest finished one is used again

protected:
    void produce(wave::BasicBlock<float>* block, int samples, int flags) override;

private:
    void fillPool();
    void updateSchedule();
    int framesWanted() const;
    VANTA_REALTIME bool takeFrame();
    VANTA_REALTIME void collectInputs(int samples);
    VANTA_REALTIME void copyInputs(int from, int count);
    void drain();
    void lock();
    void unlock();

    int channels;
    std::vector<std::unique_ptr<float[]>> frames;  ///< the pool: 3 lists times the channels, a block each
    LockFreeFifo freeFrames;
    LockFreeFifo finishedFrames;
    std::vector<const float*> inputs;
    std::array<std::unique_ptr<Measurement>, kListCount> measurements;
    std::atomic<bool> overflow{false};
    int currentFrame = -1;
    int fillPosition = 0;

    // The reader's.
    int lockCount = 0;
    std::vector<int> held;  ///< oldest first
};

/// One of the lists as an audio source.
class RealTimeAudioBuffer::Measurement final : public AudioSource, public PropertyOwner {
public:
    Measurement(RealTimeAudioBuffer& bufferOwner, int list, int channels);

    void lock() override { owner.lock(); }
    void unlock() override { owner.unlock(); }
    int blockLength() const override { return kBlockLength; }
    const float* block(int frame, int channel) const override;
    int frameCount() const override { return static_cast<int>(owner.held.size()); }
    int channelCount() const override { return owner.channels; }

    /// Set-up; a channel without one records silence.
    void setInput(int channel, wave::Producer& input) { inputs[static_cast<std::size_t>(channel)] = &input; }

    Property<bool> enabled;  ///< all lists are recorded as long as one is enabled

private:
    friend class RealTimeAudioBuffer;
    void propertyChanged(AbstractProperty& property) override;

    RealTimeAudioBuffer& owner;
    int index;
    std::vector<wave::Producer*> inputs;
};

}  // namespace vanta
