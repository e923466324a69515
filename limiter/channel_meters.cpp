#include "limiter/channel_meters.hpp"

#include "foundation/numbers.hpp"

namespace vanta {

namespace {

using MeterScale = VantaParameters::MeterScale;

constexpr float kLargestRmsWindowMs = 2000.0f;
constexpr float kKScaleWindowMs = 600.0f;
constexpr float kLoudnessWindowMs = 400.0f;
/// A sine of full scale reads 0 dB on a K scale.
constexpr double kKScaleOffsetDb = 3.0;
constexpr double kLoudnessOffsetDb = -0.691;

constexpr float kFall = 25.0f;        ///< dB per second
constexpr float kNoFall = 100000.0f;  ///< follows at once

bool isKScale(MeterScale scale) {
    return scale == MeterScale::K12 || scale == MeterScale::K14 || scale == MeterScale::K20;
}

/// A narrow scale moves slowly, so that the bar can be followed.
float peakFallOf(MeterScale scale) {
    switch (scale) {
        case MeterScale::Db16:
            return 4.0f;
        case MeterScale::Db32:
            return 8.0f;
        case MeterScale::Db48:
            return 12.0f;
        default:
            return kFall;
    }
}

void setRange(LevelMeter& meter, float minimum, float maximum, float fall) {
    meter.minimum = minimum;
    meter.maximum = maximum;
    meter.fall = fall;
}

}  // namespace

float ChannelMeters::LoudnessLevelSource::value(Info info) {
    if (info == Highest && !isKScale(parameters.meterScale.mapped())) return momentary.value(Current);
    return rms.value(info);
}

ChannelMeters::ChannelMeters(VantaChannel& measuredChannel, LoudnessMeter& loudnessMeter,
                             VantaParameters& parameters)
    : limited(measuredChannel.limitedSignal()),
      weighting(limited.environment()),
      rmsFilter(limited.environment(), kLargestRmsWindowMs),
      outputMeter(limited.environment()),
      rmsMeter(limited.environment()),
      gainMeter(limited.environment()),
      loudnessLevel(rmsMeter, loudnessMeter.source(LoudnessMeter::MomentarySource), parameters) {
    weighting.source = &limited;
    loudnessMeter.setChannel(measuredChannel.index(), measuredChannel.typeWord(), weighting);

    rmsFilter.source = &weighting.weighted();
    rmsFilter.domain = RMSFilter::Power;
    rmsFilter.window.parameter().setRange(0.0f, kLargestRmsWindowMs);
    rmsFilter.window.parameter().setValue(kLargestRmsWindowMs, 0.0f);

    outputMeter.source = &measuredChannel.outputEnvelope();
    setRange(outputMeter, -180.0f, 30.0f, kFall);

    rmsMeter.source = &rmsFilter;
    rmsMeter.inputDomain = LevelMeter::PowerDomain;
    rmsMeter.clipIndicator = false;
    rmsMeter.peakHoldTime = 0.0f;
    setRange(rmsMeter, -180.0f, 0.0f, kFall);
    rmsMeter.peakFall = kFall;

    gainMeter.source = &measuredChannel.totalGain();
    gainMeter.detectionMode = LevelSource::Minimum;
    gainMeter.clipIndicator = false;
    gainMeter.holdTime = 0.05f;
    setRange(gainMeter, -72.0f, 0.0f, kNoFall);
}

void ChannelMeters::setScale(MeterScale scale) {
    const bool k = isKScale(scale);
    rmsFilter.scale = static_cast<float>(gainFromDb(k ? kKScaleOffsetDb : kLoudnessOffsetDb));
    rmsFilter.window.assign(k ? kKScaleWindowMs : kLoudnessWindowMs, nullptr);
    rmsFilter.source = k ? &limited : &weighting.weighted();
    const float fall = peakFallOf(scale);
    outputMeter.fall = fall;
    rmsMeter.fall = k ? fall : kNoFall;
    rmsMeter.peakFall = rmsMeter.fall.value();
}

void ChannelMeters::resetPeaks() {
    outputMeter.resetPeak();
    rmsMeter.resetPeak();
    gainMeter.resetPeak();
}

}  // namespace vanta
