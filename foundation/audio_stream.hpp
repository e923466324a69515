#pragma once

#include <cstddef>
#include <span>

namespace vanta {

/// The sample rates that streams may have, in Hz.
inline constexpr double kLowestSampleRate = 8000.0;
inline constexpr double kHighestSampleRate = 384000.0;

/// A source of audio, read piece by piece. Channels come in the order of the layout.
class AudioReader {
public:
    virtual ~AudioReader() = default;

    virtual int channelCount() const = 0;
    /// Fills each channel with the next frames and returns their number: fewer than `frames` only at the
    /// end. Throws when the medium fails.
    virtual std::size_t read(std::span<float* const> channels, std::size_t frames) = 0;
};

/// Where audio goes. Throws when the medium fails.
class AudioWriter {
public:
    virtual ~AudioWriter() = default;

    virtual void write(std::span<const float* const> channels, std::size_t frames) = 0;
};

}  // namespace vanta
