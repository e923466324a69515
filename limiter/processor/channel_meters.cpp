#include "limiter/processor/channel_meters.hpp"

#include <stdexcept>

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

/// How the meters read on each scale. A narrow scale moves slowly, so that the bar can be followed.
struct Reading {
    bool isK;
    float peakFall;
};

constexpr Reading readingOn(MeterScale scale) {
    constexpr Reading kReadings[] = {{false, 4.0f}, {false, 8.0f}, {false, 12.0f},  // -16, -32, -48 dB
                                     {true, kFall}, {true, kFall}, {true, kFall},   // K-12, K-14, K-20
                                     {false, kFall}};                               // Loudness
    return kReadings[static_cast<std::size_t>(scale)];
}
static_assert(readingOn(MeterScale::Db48).peakFall == 12.0f);
static_assert(readingOn(MeterScale::K12).isK && readingOn(MeterScale::K20).isK);
static_assert(!readingOn(MeterScale::Loudness).isK);

void setRange(LevelMeter& meter, float minimum, float maximum, float fall) {
    meter.minimum = minimum;
    meter.maximum = maximum;
    meter.fall = fall;
}

}  // namespace

float ChannelMeters::LoudnessLevelSource::value(Info info) {
    if (info == Highest && !readingOn(parameters_.meterScale.mapped()).isK) return momentary_.value(Current);
    return rms_.value(info);
}

ChannelMeters::ChannelMeters(VantaChannel& channel, LoudnessMeter& loudnessMeter, VantaParameters& parameters)
    : limited_(channel.limitedSignal()),
      weighting_(limited_.environment()),
      rmsFilter_(limited_.environment(), kLargestRmsWindowMs),
      outputMeter_(limited_.environment()),
      rmsMeter_(limited_.environment()),
      gainMeter_(limited_.environment()),
      loudnessLevel_(rmsMeter_, loudnessMeter.source(LoudnessMeter::MomentarySource), parameters) {
    weighting_.source = &limited_;
    loudnessMeter.setChannel(channel.index(), channel.typeWord(), weighting_);

    rmsFilter_.source = &weighting_.weighted();
    rmsFilter_.domain = RMSFilter::Power;
    rmsFilter_.window.parameter().setRange(0.0f, kLargestRmsWindowMs);
    rmsFilter_.window.parameter().setValue(kLargestRmsWindowMs, 0.0f);

    outputMeter_.source = &channel.outputEnvelope();
    setRange(outputMeter_, -180.0f, 30.0f, kFall);

    rmsMeter_.source = &rmsFilter_;
    rmsMeter_.inputDomain = LevelMeter::PowerDomain;
    rmsMeter_.clipIndicator = false;
    rmsMeter_.peakHoldTime = 0.0f;
    setRange(rmsMeter_, -180.0f, 0.0f, kFall);
    rmsMeter_.peakFall = kFall;

    gainMeter_.source = &channel.totalGain();
    gainMeter_.detectionMode = wave::LevelSource::Minimum;
    gainMeter_.clipIndicator = false;
    gainMeter_.holdTime = 0.05f;
    setRange(gainMeter_, -72.0f, 0.0f, kNoFall);
}

wave::LevelSource& ChannelMeters::level(ChannelLevel which) {
    switch (which) {
        case ChannelLevel::OutputPeak:
            return outputMeter_;
        case ChannelLevel::RmsOrLoudness:
            return loudnessLevel_;
        case ChannelLevel::Gain:
            return gainMeter_;
        case ChannelLevel::Count:
            break;
    }
    throw std::logic_error("no level of a channel");
}

void ChannelMeters::setScale(MeterScale scale) {
    const auto [k, fall] = readingOn(scale);
    rmsFilter_.scale = static_cast<float>(gainFromDb(k ? kKScaleOffsetDb : kLoudnessOffsetDb));
    rmsFilter_.window.assign(k ? kKScaleWindowMs : kLoudnessWindowMs, nullptr);
    rmsFilter_.source = k ? &limited_ : &weighting_.weighted();
    outputMeter_.fall = fall;
    rmsMeter_.fall = k ? fall : kNoFall;
    rmsMeter_.peakFall = rmsMeter_.fall.value();
}

void ChannelMeters::resetPeaks() {
    outputMeter_.resetPeak();
    rmsMeter_.resetPeak();
    gainMeter_.resetPeak();
}

}  // namespace vanta
