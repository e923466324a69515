#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "audiofile/audio_file_reader.hpp"

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
    AudioFileReader* sideChain() { return sideChain_ ? &*sideChain_ : nullptr; }
    const ChannelMapping& mapping() const { return mapping_; }
    int sampleRate() const { return input_.info().samplerate; }  ///< Hz
    const std::vector<std::string>& warnings() const { return warnings_; }

    /// Both files start again.
    void rewind();

private:
    void openSideChain(const std::filesystem::path& path);

    AudioFileReader input_;
    std::optional<AudioFileReader> sideChain_;
    ChannelMapping mapping_;
    std::vector<std::string> warnings_;
};

}  // namespace vanta
