#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "wave/aligned_buffer.hpp"

namespace vanta {

/// Finds the largest magnitude of the continuous signal that the samples of one channel represent, with
/// silence before and after. It checks on what a limiter has made, so it shares nothing with the converters
/// that limiting uses: eight points a sample, from a windowed sinc of 128 samples that is flat within 0.001
/// dB to 0.48 of the sample rate, and a parabola through the highest three, which leaves at most 0.005 dB
/// between two points.
class TruePeakJudge {
public:
    TruePeakJudge();

    /// Starts over from silence.
    void reset();
    /// The next samples, which must be finite. The result does not depend on how a stream is cut.
    void process(const float* samples, std::size_t count);
    /// After the last sample: flushes what is still inside.
    void finish();

    /// As a factor of full scale, over all that was decided so far.
    double peak() const { return peak_; }
    /// Where it lies, in samples from the first one.
    double position() const { return position_; }
    /// The peak of what was decided since the last call, as a factor of full scale. What is decided lies up
    /// to `kHalfWidth` samples before the newest sample.
    double takeLatestPeak() { return std::exchange(latest_, 0.0); }

    static constexpr int kHalfWidth = 64;  ///< samples on each side of a point

private:
    static constexpr int kTaps = 2 * kHalfWidth;
    static constexpr int kPoints = 8;  ///< of a sample
    static constexpr int kChunk = 256;
    static constexpr int kCarried = 2;  ///< points of the last chunk that take part in the next

    using Taps = std::array<float, kTaps>;
    using Row = std::array<float, kChunk>;

    void processChunk(const float* samples, int count);
    bool isWorthALook(int count) const;
    void interleave(int count);
    void look(int count);
    void weigh(int point);

    std::array<Taps, kPoints> taps_{};
    wave::AlignedBuffer<float> history_;  ///< kTaps - 1 samples of the past, then a chunk
    std::array<Row, kPoints> rows_{};     ///< one phase a row
    std::array<float, kCarried + kChunk * kPoints> points_{};  ///< all phases in order of time
    std::int64_t firstPoint_ = 0;  ///< of `points`, in points from the first sample
    double peak_ = 0.0;
    double latest_ = 0.0;
    double position_ = 0.0;
};

}  // namespace vanta
