#pragma once

#include <array>
#include <memory>
#include <span>
#include <vector>

#include "dsp/metering/loudness_meter.hpp"
#include "foundation/channel_layout.hpp"
#include "measure/programme.hpp"

namespace vanta {

/// The readings at the end of every 100 ms of a programme.
struct TimelinePoint {
    double seconds = 0.0;
    float momentary = kNoLoudness;  ///< LUFS; kNoLoudness also while the first window is not full
    float shortTerm = kNoLoudness;
    float samplePeak = 0.0f;  ///< of these 100 ms, as a factor of full scale
    float truePeak = 0.0f;
};

/// Measures a whole programme: loudness after ITU-R BS.1770-4 and EBU R128, peaks and RMS. It runs faster
/// than real time on whatever thread calls it; the figures do not depend on how the stream is cut into
/// blocks. True peaks come from another interpolator than the limiter's: measured with its own, everything
/// that it limits would read as perfect.
class ProgrammeMeter {
public:
    /// `sampleRate` in Hz.
    ProgrammeMeter(ChannelLayout layout, double sampleRate);
    ~ProgrammeMeter();

    /// The next frames, one pointer a channel in the layout's order. A sample that is not finite counts as 0.
    void process(std::span<const float* const> channels, std::size_t frames);
    /// After the last frame: completes the figures.
    void finish();

    /// Complete after `finish`.
    const Programme& programme() const { return programme_; }
    std::span<const TimelinePoint> timeline() const { return points_; }

private:
    static constexpr int kChunk = 256;

    class Channel;

    void runChunk();
    void noteLoudness(int samples);
    void noteChannel(std::size_t index, int samples);
    void completeTruePeaks();
    void placePoint(int samples, const float* momentary, const float* shortTerm);
    TimelinePoint& pointAt(std::int64_t sample);
    double secondsAt(std::int64_t sample) const { return static_cast<double>(sample) / rate_; }

    double rate_;
    std::int64_t stride_;  ///< samples of a timeline point
    wave::Environment environment_;
    LoudnessMeter loudness_;
    std::vector<std::unique_ptr<Channel>> channels_;
    Programme programme_;
    std::vector<TimelinePoint> points_;
    int pending_ = 0;            ///< samples that wait for a whole chunk
    std::int64_t position_ = 0;  ///< of the current chunk
};

}  // namespace vanta
