#pragma once

#include <cstdint>
#include <span>

#include "audiofile/alac/bit_writer.hpp"

namespace vanta {

/// What decoders are told of the code.
struct GolombParameters {
    static constexpr std::uint32_t kHistory = 40;
    static constexpr std::uint32_t kInitialHistory = 10;
    static constexpr int kMostBits = 14;
    static constexpr int kMostRun = 255;
};

/// Writes differences of `bits` bits in the Golomb code of Apple Lossless. Its parameter follows a running
/// mean; where that is small, runs of zeros are counted.
void putGolomb(BitWriter& writer, std::span<const std::int32_t> differences, int bits);

}  // namespace vanta
