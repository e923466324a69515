#pragma once

#include "host/offline/audio_stream.hpp"
#include "host/offline/programme_meter.hpp"

namespace vanta {

/// Measures what passes through from another reader.
class MeasuringReader final : public AudioReader {
public:
    /// `sampleRate` in Hz.
    MeasuringReader(AudioReader& audioSource, ChannelLayout layout, double sampleRate);

    int channelCount() const override { return source.channelCount(); }
    std::size_t read(std::span<float* const> channels, std::size_t frames) override;
    /// Of all that was read. Behind the last frame.
    const Programme& finish();

private:
    AudioReader& source;
    ProgrammeMeter meter;
};

/// Measures what is written, and keeps nothing of it.
class MeasuringWriter final : public AudioWriter {
public:
    /// `sampleRate` in Hz.
    MeasuringWriter(ChannelLayout layout, double sampleRate);

    void write(std::span<const float* const> channels, std::size_t frames) override;
    /// Behind the last frame.
    void finish();

    const Programme& programme() const { return meter.programme(); }

private:
    ProgrammeMeter meter;
};

}  // namespace vanta
