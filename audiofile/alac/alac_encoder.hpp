#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "audiofile/alac/bit_writer.hpp"
#include "audiofile/alac/linear_predictor.hpp"

namespace vanta {

/// Encodes mono or stereo as packets of Apple Lossless.
class AlacEncoder {
public:
    static constexpr std::size_t kPacketFrames = 4096;

    /// `channels`: 1 or 2; `bits`: word length, 16 to 32.
    AlacEncoder(int channels, int bits);

    /// Interleaved samples, with their bits on top, of at most `kPacketFrames` frames; fewer only in the last
    /// packet.
    std::string packet(std::span<const std::int32_t> samples);
    /// What decoders have to know beforehand. `sampleRate` in Hz.
    std::string cookie(int sampleRate) const;

private:
    std::size_t width() const { return static_cast<std::size_t>(channels_); }
    int predictedBits() const { return bits_ - shift_ + channels_ - 1; }
    void split(std::span<const std::int32_t> samples);
    int mix();
    void putHeader(BitWriter& writer, std::size_t frames) const;
    void putPredicted(BitWriter& writer, std::size_t frames);

    int channels_;
    int bits_;
    int shift_;  ///< lowest bits, which follow no rule and are written as they are
    std::array<LinearPredictor, 2> predictors_;
    std::array<std::vector<std::int32_t>, 2> planes_;
    std::vector<std::uint32_t> lowest_;  ///< interleaved
    std::vector<std::int32_t> differences_;
};

}  // namespace vanta
