#pragma once

#include <memory>
#include <vector>

#include "dsp/metering/true_peak_judge.hpp"
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

/// Judges the true peak of all channels of a stream.
class StreamJudge {
public:
    explicit StreamJudge(int channels);

    /// A sample that is not finite counts as 0.
    void process(std::span<const float* const> channels, std::size_t frames);
    /// The highest true peak as a factor of full scale. Behind the last frame.
    double finish();

private:
    std::vector<std::unique_ptr<TruePeakJudge>> judges;
    std::vector<float> finite;
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
    /// As a factor of full scale.
    double truePeak() const { return peak; }

private:
    ProgrammeMeter meter;
    StreamJudge judge;
    double peak = 0.0;
};

}  // namespace vanta
