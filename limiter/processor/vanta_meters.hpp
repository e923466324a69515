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

    /// In the order of meter_order.hpp, like the recorded audio.
    std::vector<wave::LevelSource*> levelSources();
    /// Each of all channels.
    std::vector<wave::AudioSource*> audioSources();

    /// Set-up: makes room for audio of the host's blocks. Allocates.
    void setLargestHostBlock(int samples) { audioBuffer_.setLargestHostBlock(samples); }

    VANTA_REALTIME void setScale(VantaParameters::MeterScale scale);
    VANTA_REALTIME void resetPeaks();
    /// Starts the loudness over, which no change of the signal path does.
    VANTA_REALTIME void resetLoudness() { loudnessMeter_.reset(); }
    /// Samples until a path that has rested puts out signal again.
    VANTA_REALTIME void setPathDelay(int samples) { loudnessMeter_.warmUpSamples = samples; }

private:
    wave::LevelSource& level(ProgrammeLevel which);
    RealTimeAudioBuffer::Measurement& audio(RecordedAudio which) {
        return audioBuffer_.measurement(static_cast<int>(which));
    }

    LoudnessMeter loudnessMeter_;
    RealTimeAudioBuffer audioBuffer_;
    std::vector<std::unique_ptr<ChannelMeters>> channelMeters_;
};

}  // namespace vanta
