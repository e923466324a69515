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
    /// From the beginning, soon. Any thread.
    void restart() { restart_.store(true); }
    /// Whether it starts over when it has ended. Any thread.
    void setLooping(bool looping) { looping_.store(looping); }
    bool isLooping() const { return looping_.load(); }

private:
    static constexpr std::size_t kAhead = std::size_t{1} << 17;  ///< samples; a power of two
    static constexpr std::size_t kPortion = 8192;

    void readAhead();
    /// Samples that can be written.
    std::size_t room() const { return kAhead - static_cast<std::size_t>(written_.load() - played_.load()); }
    void readPortion();

    AudioFileReader& reader_;
    std::vector<std::vector<float>> channels_;
    std::vector<std::vector<float>> portion_;
    std::atomic<std::uint64_t> written_{0};
    std::atomic<std::uint64_t> played_{0};
    std::atomic<bool> restart_{false};
    std::atomic<bool> looping_{true};
    bool atEnd_ = false;  ///< of the reader; the thread's, once it runs
    std::atomic<bool> quit_{false};
    std::thread thread_;
};

}  // namespace vanta
