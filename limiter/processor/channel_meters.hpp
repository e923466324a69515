#pragma once

#include "dsp/detector/rms_filter.hpp"
#include "dsp/metering/level_meter.hpp"
#include "dsp/metering/loudness_meter.hpp"
#include "limiter/parameters/meter_order.hpp"
#include "limiter/processor/vanta_channel.hpp"

namespace vanta {

/// What is measured of one channel: output peak, RMS and gain, and its part in the loudness.
class ChannelMeters {
public:
    ChannelMeters(VantaChannel& channel, LoudnessMeter& loudnessMeter, VantaParameters& parameters);

    wave::LevelSource& level(ChannelLevel which);

    /// Takes up Meter Scale. Audio thread.
    VANTA_REALTIME void setScale(VantaParameters::MeterScale scale);
    VANTA_REALTIME void resetPeaks();

private:
    /// The RMS meter, but for the scales without K its peak reading is the programme's momentary loudness.
    class LoudnessLevelSource final : public wave::LevelSource {
    public:
        LoudnessLevelSource(LevelMeter& rms, wave::LevelSource& momentary, VantaParameters& parameters)
            : rms_(rms), momentary_(momentary), parameters_(parameters) {}
        Detection detection() const override { return rms_.detection(); }
        float value(Info info) override;
        void resetPeak() override { rms_.resetPeak(); }
        void resetMeasurement() override {}

    private:
        LevelMeter& rms_;
        wave::LevelSource& momentary_;
        VantaParameters& parameters_;
    };

    wave::Producer& limited_;
    LoudnessMeter::ChannelFilter weighting_;
    RMSFilter rmsFilter_;
    LevelMeter outputMeter_;
    LevelMeter rmsMeter_;
    LevelMeter gainMeter_;
    LoudnessLevelSource loudnessLevel_;
};

}  // namespace vanta
