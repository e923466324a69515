#pragma once

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

#include "foundation/audio_stream.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {

/// One signal a channel, played once.
class MemoryReader final : public AudioReader {
public:
    explicit MemoryReader(std::vector<Signal> channels) : channels_(std::move(channels)) {}
    int channelCount() const override { return static_cast<int>(channels_.size()); }
    std::size_t read(std::span<float* const> to, std::size_t frames) override {
        const std::size_t count = std::min(frames, channels_[0].size() - position_);
        for (std::size_t c = 0; c < to.size(); ++c) {
            std::copy_n(channels_[c].data() + position_, count, to[c]);
        }
        position_ += count;
        return count;
    }

private:
    std::vector<Signal> channels_;
    std::size_t position_ = 0;
};

class MemoryWriter final : public AudioWriter {
public:
    void write(std::span<const float* const> from, std::size_t frames) override {
        written.resize(from.size());
        for (std::size_t c = 0; c < from.size(); ++c) {
            written[c].insert(written[c].end(), from[c], from[c] + frames);
        }
    }
    std::vector<Signal> written;
};

}  // namespace vanta::test
