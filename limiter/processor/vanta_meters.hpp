#pragma once

#include <memory>
#include <span>
#include <vector>

#include "dsp/metering/loudness_meter.hpp"
#include "dsp/metering/real_time_audio_buffer.hpp"
#include "limiter/processor/channel_meters.hpp"

namespace vanta {

/// All that an interface reads of the limiter: levels, and audio for the level display.
class VantaMeters {
public:
    using Channels = std::span<const std::unique_ptr<VantaChannel>>;

    VantaMeters(wave::Environment& environment, Channels channels, VantaParameters& parameters);

    /// The loudness of the programme on three time scales, then output peak, RMS and gain of each channel.
    std::vector<wave::LevelSource*> levelSources();
    /// Input, output and gain, each of all channels.
    std::vector<wave::AudioSource*> audioSources();

    VANTA_REALTIME void setScale(VantaParameters::MeterScale scale);
    VANTA_REALTIME void resetPeaks();

private:
    LoudnessMeter loudnessMeter_;
    RealTimeAudioBuffer audioBuffer_;
    std::vector<std::unique_ptr<ChannelMeters>> channelMeters_;
};

}  // namespace vanta
