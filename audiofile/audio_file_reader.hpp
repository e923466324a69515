#pragma once

#include <sndfile.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "audiofile/channel_mapping.hpp"
#include "audiofile/format_choice.hpp"
#include "foundation/audio_stream.hpp"

namespace vanta {

struct CloseSoundFile {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using SoundFile = std::unique_ptr<SNDFILE, CloseSoundFile>;

/// Reads an audio file as float samples, in the order of a layout.
class AudioFileReader final : public AudioReader {
public:
    /// Failure, with the path in front, for a file that is missing, unreadable, empty, cut off, not audio, or
    /// at an unsupported sample rate.
    explicit AudioFileReader(const std::filesystem::path& path);

    const std::filesystem::path& path() const { return path_; }
    const SF_INFO& info() const { return info_; }
    SNDFILE* handle() const { return file_.get(); }
    /// The speakers that the file names, in libsndfile's numbers; empty if it names none.
    const std::vector<int>& positions() const { return positions_; }
    /// How the channels are ordered where no positions are named.
    SpeakerOrder usualOrder() const;
    StreamShape shape() const { return {info_.format, info_.samplerate, info_.channels, info_.frames}; }

    /// From now on channels come in the order of a layout: the one that the file's own positions mean, or
    /// `layout` where they leave it open. A warning is added when they match none. Failure, with the path in
    /// front, for channels that no layout has.
    ChannelMapping mapTo(std::optional<ChannelLayout> layout, std::vector<std::string>& warnings);
    /// The same for a mapping that is known.
    void setMapping(const ChannelMapping& mapping) { fileChannel_ = mapping.fileChannel; }
    /// Back to the first frame, also after `rest`.
    void rewind() { seek(0); }
    /// The frame that is read next, from 0 to the file's length; also after `rest`. Failure, with the path in
    /// front, where the file is damaged or has changed.
    void seek(sf_count_t frame);
    /// Closes the file until the next `rewind` or `seek`: a program can only have so many open.
    void rest() { file_.reset(); }

    int channelCount() const override { return info_.channels; }
    std::size_t read(std::span<float* const> channels, std::size_t frames) override;

private:
    std::vector<int> statedPositions() const;

    std::filesystem::path path_;
    SF_INFO info_{};
    SoundFile file_;
    std::vector<int> positions_;
    std::vector<int> fileChannel_;
    std::vector<float> interleaved_;
    sf_count_t delivered_ = 0;
};

}  // namespace vanta
