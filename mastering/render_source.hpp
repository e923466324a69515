#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "audiofile/audio_file_reader.hpp"
#include "audiofile/resampled_reader.hpp"

namespace vanta {

/// A file that is to be limited, with the side chain that goes with it, opened and checked.
class RenderSource {
public:
    /// `sideChain` may be empty. `layout` says what the channels are where the file leaves it open.
    /// Failure for files that cannot be rendered, or not together.
    RenderSource(const std::filesystem::path& input, const std::filesystem::path& sideChain,
                 std::optional<ChannelLayout> layout);

    AudioFileReader& input() { return input_; }
    const AudioFileReader& input() const { return input_; }
    /// The samples to be limited, and those that control it or null, at the rate that was asked for.
    AudioReader& audio();
    AudioReader* sideChain();
    const ChannelMapping& mapping() const { return mapping_; }
    int sampleRate() const { return input_.info().samplerate; }  ///< Hz, of the files
    /// Of `audio()`.
    std::int64_t frames() const { return frames_; }
    /// Samples of the input, as far as they were read, that a conversion took for silence.
    std::int64_t notFinite() const { return convertedInput_ ? convertedInput_->notFinite() : 0; }

    /// From now on both are converted to this sample rate, in Hz.
    void convertTo(int sampleRate);
    /// Something to be said of every render.
    void note(std::string warning) { warnings_.push_back(std::move(warning)); }
    const std::vector<std::string>& warnings() const { return warnings_; }

    /// Both files start again.
    void rewind();
    /// Both are closed until then.
    void rest();

private:
    void openSideChain(const std::filesystem::path& path);

    AudioFileReader input_;
    std::optional<AudioFileReader> sideChain_;
    std::optional<ResampledReader> convertedInput_;
    std::optional<ResampledReader> convertedSideChain_;
    std::int64_t frames_ = 0;
    ChannelMapping mapping_;
    std::vector<std::string> warnings_;
};

}  // namespace vanta
