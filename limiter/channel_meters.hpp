#pragma once

#include "dsp/metering/level_meter.hpp"
#include "dsp/metering/loudness_meter.hpp"
#include "dsp/rms_filter.hpp"
#include "limiter/vanta_channel.hpp"

namespace vanta {

/// What is measured of one channel: output peak, RMS and gain, and its part in the loudness.
class ChannelMeters {
public:
    ChannelMeters(VantaChannel& measuredChannel, LoudnessMeter& loudnessMeter, VantaParameters& parameters);

    LevelMeter& outputPeak() { return outputMeter; }
    LevelSource& rmsOrLoudness() { return loudnessLevel; }
    LevelMeter& gain() { return gainMeter; }
    LoudnessMeter::ChannelFilter& loudnessFilter() { return weighting; }

    /// Takes up Meter Scale. Audio thread.
    VANTA_REALTIME void setScale(VantaParameters::MeterScale scale);
    VANTA_REALTIME void resetPeaks();

private:
    /// The RMS meter, but for the scales without K its peak reading is the programme's momentary loudness.
    class LoudnessLevelSource final : public LevelSource {
    public:
        LoudnessLevelSource(LevelMeter& rmsMeter, LevelSource& momentaryLoudness, VantaParameters& table)
            : rms(rmsMeter), momentary(momentaryLoudness), parameters(table) {}
        Detection detection() const override { return rms.detection(); }
        float value(Info info) override;
        void resetPeak() override { rms.resetPeak(); }
        void resetMeasurement() override {}

    private:
        LevelMeter& rms;
        LevelSource& momentary;
        VantaParameters& parameters;
    };

    wave::Producer& limited;
    LoudnessMeter::ChannelFilter weighting;
    RMSFilter rmsFilter;
    LevelMeter outputMeter;
    LevelMeter rmsMeter;
    LevelMeter gainMeter;
    LoudnessLevelSource loudnessLevel;
};

}  // namespace vanta
