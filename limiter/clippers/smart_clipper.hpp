#pragma once

#include <cstdint>
#include <vector>

#include "dsp/detector/gain_change_domain.hpp"
#include "foundation/property.hpp"
#include "wave/delay.hpp"
#include "wave/float_parameter_source.hpp"
#include "wave/producer.hpp"

namespace vanta {

/// Turns the excess of a level over a threshold into a gain change that leads from peak to peak in straight
/// lines, over a window of 50 ms, instead of following the waveform. It is never below the excess itself, so
/// it clips what passes the threshold. Latency: the window.
class SmartClipper final : public wave::Source, public wave::Consumer, public PropertyOwner {
public:
    static constexpr double kWindowSeconds = 0.05;

    explicit SmartClipper(wave::Environment& owner);

    void prepare() override;
    void reset() override;
    /// Latency in samples.
    int windowSamples() const { return windowSamples_; }

    Property<int> domain;               ///< GainChangeDomain of input and output
    wave::FloatParameterBus threshold;  ///< dB, -180 to 180

    /// The level as an amplitude, where the source is a conversion of that to dB: far from any excess the
    /// conversion is not asked for. May be null.
    wave::Producer* amplitude = nullptr;

protected:
    /// Without a line, and with nothing but silence in the window.
    bool settled() const override { return evenSamples_ >= delay_.ringSize() && count_ == 0; }
    void propertyChanged(AbstractProperty&) override { environment().noteChange(); }
    VANTA_REALTIME void produce(wave::BasicBlock<float>* block, int samples, int flags) override;

private:
    struct Point {
        std::int64_t time;
        float value;
    };

    VANTA_REALTIME bool passQuietly(int samples);
    VANTA_REALTIME std::int64_t lastPeak(const float* level, int samples);
    VANTA_REALTIME void takeLevels(const float* level, float* out, int count) const;
    VANTA_REALTIME void dropLinesBefore(std::int64_t time);
    VANTA_REALTIME void computeExcess(const float* in, float* excess, int samples);
    VANTA_REALTIME std::uint64_t peaksPassed(const float* in, int count);
    VANTA_REALTIME void followLines(float* result, int first, int end, std::uint64_t peaks);
    VANTA_REALTIME void raiseToLine(float* result, int from, int end) const;
    VANTA_REALTIME void moveLine(std::int64_t time, bool peakPassed, Point last);
    VANTA_REALTIME void takeLine();
    Point& point(int index) { return points_[static_cast<std::size_t>((head_ + index) & mask_)]; }

    wave::BasicBlock<float> excess_;
    wave::Delay delay_;  ///< of the excess
    int windowSamples_ = 0;
    std::vector<Point> points_;  ///< a ring; the line runs from the point before `head_` to the one at it
    int mask_ = 0;
    int head_ = 0;
    int count_ = 0;
    std::int64_t lineStart_ = 0;
    std::int64_t lineEnd_ = 0;
    float lineValue_ = 0.0f;  ///< at its start
    float slope_ = 0.0f;      ///< per sample
    float previousExcess_ = 0.0f;
    float previousInput_ = 0.0f;
    int direction_ = 1;
    std::int64_t evenSamples_ = 0;   ///< how many of the newest have no excess and stand still
    std::int64_t quietSamples_ = 0;  ///< how many of the newest have no excess
    std::int64_t position_ = 0;
};

}  // namespace vanta
