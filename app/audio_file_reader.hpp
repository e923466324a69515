#pragma once

#include <sndfile.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/channel_mapping.hpp"
#include "host/offline/audio_stream.hpp"

namespace vanta {

struct CloseSoundFile {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using SoundFile = std::unique_ptr<SNDFILE, CloseSoundFile>;

/// Reads an audio file as float samples, in the order of a layout.
class AudioFileReader final : public AudioReader {
public:
    /// Failure, with the path in front, for a file that is missing, not readable, empty, cut off or no audio.
    explicit AudioFileReader(const std::filesystem::path& audioPath);

    const std::filesystem::path& path() const { return path_; }
    const SF_INFO& info() const { return info_; }
    SNDFILE* handle() const { return file.get(); }
    /// The speakers that the file names, in libsndfile's numbers; empty if it names none.
    std::vector<int> positions() const;
    /// How the channels are ordered when no position is named.
    SpeakerOrder usualOrder() const;
    StreamShape shape() const { return {info_.format, info_.samplerate, info_.channels, info_.frames}; }

    /// From now on channels come in the order of a layout: the one that the file's own positions mean, or
    /// `layout` where they leave it open. `warnings` is told when they fit none. Failure, with the path in
    /// front, for channels that no layout takes.
    ChannelMapping mapTo(std::optional<ChannelLayout> layout, std::vector<std::string>& warnings);
    /// The same for a mapping that is known.
    void setMapping(const ChannelMapping& mapping) { fileChannel = mapping.fileChannel; }
    void rewind();

    int channelCount() const override { return info_.channels; }
    std::size_t read(std::span<float* const> channels, std::size_t frames) override;

private:
    std::filesystem::path path_;
    SF_INFO info_{};
    SoundFile file;
    std::vector<int> fileChannel;
    std::vector<float> interleaved;
    sf_count_t delivered = 0;
};

}  // namespace vanta
