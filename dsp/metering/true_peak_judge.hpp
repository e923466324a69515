#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "dsp/metering/rate_steps.hpp"
#include "dsp/metering/sinc_tail.hpp"

namespace vanta {

/// Finds the largest magnitude of the continuous signal that the samples of one channel represent, with
/// silence before and after. It checks on what a limiter has made, so it shares no filter with the converters
/// that limiting uses, and it is ideal for practical purposes: its kernel reaches 131,072 samples to each
/// side, flat within 0.001 dB to 0.49999 of the sample rate. A short filter and SincTail make the points
/// half-way between samples, two steps of an ordinary half-band filter eight points a sample, and a parabola
/// through the highest three leaves at most 0.005 dB between two points.
class TruePeakJudge {
public:
    /// Peaks are also told for each `segment` samples of the stream.
    explicit TruePeakJudge(std::int64_t segment = std::numeric_limits<std::int64_t>::max());

    /// The next samples, which must be finite. The result does not depend on how a stream is cut.
    void process(const float* samples, std::size_t count);
    /// After the last sample: decides what is still inside.
    void finish();

    // Complete after `finish`.

    /// As a factor of full scale.
    double peak() const { return peak_; }
    /// Where it lies, in samples from the first one; within the stream.
    double position() const;
    /// Of each segment, as a factor of full scale. What rings on before or behind the stream belongs to its
    /// first or last segment.
    std::span<const float> segmentPeaks() const { return segments_; }

private:
    static constexpr std::size_t kBlock = 256;
    static constexpr std::size_t kBranch = 128;  ///< of the short filter
    static constexpr std::size_t kDoubled = 2 * kBlock;
    static constexpr std::size_t kContext = 32;  ///< points at twice the rate, kept for the next block
    static constexpr std::size_t kQuadrupled = 2 * (kContext + kDoubled - HalfBand::kBranch + 1);
    static constexpr std::size_t kPoints = 2 * (kQuadrupled - HalfBand::kBranch + 1);
    static constexpr int kPerSample = 8;  ///< points

    void feed(const float* samples, std::size_t count);
    void runBlock();
    void interpolateHalves();
    void look();
    void weigh(std::size_t point);
    double leastOfInterest();
    std::size_t segmentAt(double position) const;

    std::int64_t segment_;
    SincTail tail_;
    StepUp halves_;
    std::size_t delay_;  ///< of all that lies half-way between samples
    RecentSamples recent_;
    std::array<float, kBlock> waiting_{};
    std::size_t pending_ = 0;
    std::int64_t received_ = 0;  ///< samples of the stream
    std::int64_t decided_;       ///< the sample that the present block's points begin at
    std::array<float, kContext + kDoubled> doubled_{};
    std::array<float, kQuadrupled> quadrupled_;
    std::array<float, kPoints> points_;
    std::vector<float> segments_;
    double peak_ = 0.0;
    double position_ = 0.0;
};

}  // namespace vanta
