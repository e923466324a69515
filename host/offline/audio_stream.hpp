#pragma once

#include <cstddef>
#include <span>

namespace vanta {

/// Audio that comes in, a piece at a time. Channels stand in the order of the layout.
class AudioReader {
public:
    virtual ~AudioReader() = default;

    virtual int channelCount() const = 0;
    /// Fills each channel with the next frames. The result is their number: less than `frames` only at the
    /// end. Throws when the medium fails.
    virtual std::size_t read(std::span<float* const> channels, std::size_t frames) = 0;
};

/// Audio that goes out. Throws when the medium fails.
class AudioWriter {
public:
    virtual ~AudioWriter() = default;

    virtual void write(std::span<const float* const> channels, std::size_t frames) = 0;
};

}  // namespace vanta
