#include "host/aax_host/aax_selection.hpp"

#include <algorithm>

#include "host/aax_host/stem_speakers.hpp"

namespace vanta {
namespace {

constexpr std::size_t kPiece = 8192;

}  // namespace

AaxSelection::AaxSelection(AudioReader& reader, ChannelLayout layout)
    : reader_(reader), hostChannel_(stemChannels(layout)), kept_(hostChannel_.size()) {}

void AaxSelection::readUntil(std::int64_t location) {
    while (!ended_ && length() < location) {
        const std::size_t have = kept_.front().size();
        std::vector<float*> ends;
        for (auto& channel : kept_) {
            channel.resize(have + kPiece);
            ends.push_back(channel.data() + have);
        }
        const std::size_t frames = reader_.read(ends, kPiece);
        noteLevels({ends.data(), ends.size()}, frames, levels_);
        for (auto& channel : kept_) channel.resize(have + frames);
        ended_ = frames < kPiece;
    }
}

AAX_Result AaxSelection::GetAudio(float* const* buffers, std::int32_t channels, std::int64_t location,
                                  std::int32_t* samples) {
    if (!buffers || channels != static_cast<std::int32_t>(kept_.size()) || *samples < 0 || location < begin_)
        return AAX_ERROR_INVALID_ARGUMENT;
    readUntil(location + *samples);
    const std::int64_t from = std::min(location, length());
    const auto frames = std::min<std::int64_t>(*samples, length() - from);
    for (std::size_t i = 0; i < kept_.size(); ++i) {
        float* const to = buffers[hostChannel_[i]];
        std::copy_n(kept_[i].begin() + (from - begin_), frames, to);
        std::fill(to + frames, to + *samples, 0.0f);
    }
    return AAX_SUCCESS;
}

void AaxSelection::forgetBefore(std::int64_t location) {
    const std::int64_t count = std::min(location, length()) - begin_;
    if (count <= 0) return;
    for (auto& channel : kept_) channel.erase(channel.begin(), channel.begin() + count);
    begin_ += count;
}

}  // namespace vanta
