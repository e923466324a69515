#include "limiter/processor/vanta_meters.hpp"

namespace vanta {

VantaMeters::VantaMeters(wave::Environment& environment, Channels channels, VantaParameters& parameters)
    : loudnessMeter_(environment), audioBuffer_(environment, static_cast<int>(channels.size())) {
    parameters.loudnessRecording.addTarget(loudnessMeter_.enabled);
    for (const auto& channel : channels) {
        channelMeters_.push_back(std::make_unique<ChannelMeters>(*channel, loudnessMeter_, parameters));
        audioBuffer_.measurement(0).setInput(channel->index(), channel->drySignal());
        audioBuffer_.measurement(1).setInput(channel->index(), channel->signalBeforeDither());
        audioBuffer_.measurement(2).setInput(channel->index(), channel->totalGain());
    }
}

std::vector<wave::LevelSource*> VantaMeters::levelSources() {
    std::vector<wave::LevelSource*> sources;
    for (int i = 0; i < LoudnessMeter::SourceCount; ++i) {
        sources.push_back(&loudnessMeter_.source(static_cast<LoudnessMeter::SourceIndex>(i)));
    }
    for (const auto& meters : channelMeters_) {
        sources.push_back(&meters->outputPeak());
        sources.push_back(&meters->rmsOrLoudness());
        sources.push_back(&meters->gain());
    }
    return sources;
}

std::vector<wave::AudioSource*> VantaMeters::audioSources() {
    std::vector<wave::AudioSource*> sources;
    for (int list = 0; list < RealTimeAudioBuffer::kListCount; ++list) {
        sources.push_back(&audioBuffer_.measurement(list));
    }
    return sources;
}

void VantaMeters::setScale(VantaParameters::MeterScale scale) {
    for (const auto& meters : channelMeters_) meters->setScale(scale);
}

void VantaMeters::resetPeaks() {
    for (const auto& meters : channelMeters_) meters->resetPeaks();
}

}  // namespace vanta
