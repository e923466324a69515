#pragma once

#include <atomic>
#include <cstdint>
#include <span>
#include <thread>
#include <vector>

#include "audiofile/audio_file_reader.hpp"
#include "foundation/realtime.hpp"

namespace vanta {

/// Plays a file, round and round unless told: a thread of its own reads ahead, so that whoever plays never
/// waits for a disk.
class FilePlayer {
public:
    /// The reader is open and mapped to a layout, and outlives this.
    explicit FilePlayer(AudioFileReader& reader);
    ~FilePlayer();
    FilePlayer(const FilePlayer&) = delete;
    FilePlayer& operator=(const FilePlayer&) = delete;

    int channelCount() const { return static_cast<int>(channels_.size()); }
    /// Fills all channels with the next samples, with silence where the disk has not kept up.
    VANTA_REALTIME void play(std::span<float* const> channels, int samples);

    // Any thread. Positions are frames of the file.

    /// Goes on from there as soon as the disk has it; what was read ahead is not heard.
    void jump(std::int64_t frame);
    /// Of what plays next; the length when the file has ended.
    std::int64_t position() const { return position_.load(); }
    std::int64_t length() const { return length_; }
    /// Whether it starts over when it has ended.
    void setLooping(bool looping) { looping_.store(looping); }
    bool isLooping() const { return looping_.load(); }

private:
    static constexpr std::size_t kAhead = std::size_t{1} << 17;  ///< samples; a power of two
    static constexpr std::size_t kPortion = 8192;
    static constexpr std::int64_t kNoJump = -1;

    void readAhead();
    bool isIdle() const { return room() < kPortion || (atEnd_ && !looping_.load()); }
    void startAt(std::int64_t frame);
    /// Samples that can be written.
    std::size_t room() const { return kAhead - static_cast<std::size_t>(written_.load() - played_.load()); }
    void readPortion();

    AudioFileReader& reader_;
    std::vector<std::vector<float>> channels_;
    std::vector<std::int64_t> frames_;  ///< of the file, of which each sample that waits is
    std::vector<std::vector<float>> portion_;
    const std::int64_t length_;
    // Counted from the start, through all rounds and jumps.
    std::atomic<std::uint64_t> written_{0};
    std::atomic<std::uint64_t> played_{0};
    std::atomic<std::uint64_t> skipTo_{0};  ///< what waits before it is not to be heard any more
    std::atomic<std::int64_t> position_{0};
    std::atomic<std::int64_t> jumpTo_{kNoJump};
    std::atomic<bool> looping_{true};
    // The thread's, once it runs.
    std::int64_t nextFrame_ = 0;
    bool atEnd_ = false;
    std::atomic<bool> quit_{false};
    std::thread thread_;
};

}  // namespace vanta
