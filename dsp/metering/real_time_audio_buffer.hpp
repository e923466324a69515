#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "foundation/lock_free_fifo.hpp"
#include "foundation/property.hpp"
#include "wave/level_source.hpp"
#include "wave/producer.hpp"

namespace vanta {

/// Carries whole streams from the audio thread to a display without a lock in the audio path: frames of 256
/// samples go from a pool through a queue to the reader and back. A reader that is too slow stops the
/// recording until its next visit and drops what was pending, so that it always gets one unbroken stretch.
/// The frames of a stream are numbered: the reader sees where one is missing, whatever the audio thread did
/// while it looked.
///
/// One audio thread, one reader.
class RealTimeAudioBuffer final : public wave::Producer {
public:
    static constexpr int kBlockLength = 256;
    static constexpr int kListCount = 3;

    class Measurement;

    RealTimeAudioBuffer(wave::Environment& owner, int channelCount);
    ~RealTimeAudioBuffer() override;

    Measurement& measurement(int list) { return *measurements_[static_cast<std::size_t>(list)]; }

    /// Sizes the pool for the sample rate and two of the host's largest blocks; it only grows.
    void prepare() override;
    /// Set-up: what the host says of its blocks, in samples. For longer ones than it has told, the reader
    /// adds frames at its next visit. Allocates.
    void setLargestHostBlock(int samples);
    /// Takes back all frames but the reader's.
    void reset() override;

    Property<bool> stopWhenFull;  ///< false: with no free frame the oldest finished one is used again

protected:
    void produce(wave::BasicBlock<float>* block, int samples, int flags) override;

private:
    void growPool();
    void updateSchedule();
    VANTA_REALTIME bool takeFrame();
    VANTA_REALTIME void collectInputs(int samples);
    VANTA_REALTIME void copyInputs(int from, int count);
    void drain();
    void giveBack();
    void lock();
    void unlock();

    int channels_;
    std::vector<std::unique_ptr<float[]>> frames_;  ///< the pool: 3 lists times the channels, a block each
    std::mutex growing_;                            ///< never taken in a block
    std::atomic<int> framesForRate_{0};
    LockFreeFifo freeFrames_;
    LockFreeFifo finishedFrames_;
    std::vector<const float*> inputs_;
    std::array<std::unique_ptr<Measurement>, kListCount> measurements_;
    std::atomic<bool> overflow_{false};
    int currentFrame_ = -1;
    int fillPosition_ = 0;
    std::uint32_t frameNumber_ = 0;  ///< of the next frame; leaves one out where the stream has a gap

    // The reader's.
    int lockCount_ = 0;
    std::uint32_t nextNumber_ = 0;  ///< of the frame that follows those held
    std::vector<int> held_;         ///< oldest first
};

/// One of the lists as an audio source.
class RealTimeAudioBuffer::Measurement final : public wave::AudioSource, public PropertyOwner {
public:
    Measurement(RealTimeAudioBuffer& owner, int list, int channels);

    void lock() override { owner_.lock(); }
    void unlock() override { owner_.unlock(); }
    int blockLength() const override { return kBlockLength; }
    const float* block(int frame, int channel) const override;
    int frameCount() const override { return static_cast<int>(owner_.held_.size()); }
    int channelCount() const override { return owner_.channels_; }

    /// Set-up; a channel without one records silence.
    void setInput(int channel, wave::Producer& input) { inputs_[static_cast<std::size_t>(channel)] = &input; }

    Property<bool> enabled;  ///< all lists are recorded as long as one is enabled

private:
    friend class RealTimeAudioBuffer;
    void propertyChanged(AbstractProperty& property) override;

    RealTimeAudioBuffer& owner_;
    int index_;
    std::vector<wave::Producer*> inputs_;
};

}  // namespace vanta
