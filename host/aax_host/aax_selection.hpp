#pragma once

#include <vector>

#include "foundation/audio_stream.hpp"
#include "foundation/channel_layout.hpp"
#include "host/aax/standin/aax.hpp"
#include "host/offline/render.hpp"

namespace vanta {

/// A stream as a selection that an offline processor reads, with silence before and after. It keeps no more
/// than lies between the window that is rendered and the furthest that was read.
class AaxSelection final : public AAX_IHostProcessorDelegate {
public:
    AaxSelection(AudioReader& reader, ChannelLayout layout);

    AAX_Result GetAudio(float* const* buffers, std::int32_t channels, std::int64_t location,
                        std::int32_t* samples) override;
    AAX_ITransport* GetTransport() override { return nullptr; }

    /// Nothing before this location will be read again.
    void forgetBefore(std::int64_t location);
    /// The end, once it was read; else what has been read so far.
    std::int64_t length() const { return begin_ + static_cast<std::int64_t>(kept_.front().size()); }
    bool hasEnded() const { return ended_; }
    const StreamLevels& levels() const { return levels_; }

    /// Reads on unless the end comes first.
    void readUntil(std::int64_t location);

private:
    AudioReader& reader_;
    std::vector<std::size_t> hostChannel_;
    std::vector<std::vector<float>> kept_;  ///< in the order of the layout
    std::int64_t begin_ = 0;                ///< of what is kept
    bool ended_ = false;
    StreamLevels levels_;
};

}  // namespace vanta
