#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "foundation/audio_stream.hpp"

namespace vanta {

/// Another reader at another sample rate: linear phase, flat to 0.91 of the lower Nyquist frequency, aliases
/// and images below 24-bit noise (libsoxr, very high quality). Its first frame stands where that of the other
/// stands.
class ResampledReader final : public AudioReader {
public:
    /// `source` from its start, with `frames` frames. Rates in Hz.
    ResampledReader(AudioReader& source, std::int64_t frames, double fromRate, double toRate);
    ~ResampledReader() override;

    /// How many frames that many become.
    static std::int64_t framesAt(std::int64_t frames, double fromRate, double toRate);

    /// After the source was put back to its start.
    void restart();
    /// Samples so far that are not numbers; they count as 0.
    std::int64_t notFinite() const;

    int channelCount() const override { return source_.channelCount(); }
    std::size_t read(std::span<float* const> channels, std::size_t frames) override;

private:
    struct Converter;

    AudioReader& source_;
    std::int64_t sourceFrames_;
    double fromRate_;
    double toRate_;
    std::unique_ptr<Converter> converter_;
    std::int64_t left_ = 0;
    std::vector<float> result_;  ///< interleaved
};

}  // namespace vanta
