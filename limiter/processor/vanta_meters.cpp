#include "limiter/processor/vanta_meters.hpp"

#include <stdexcept>

namespace vanta {

VantaMeters::VantaMeters(wave::Environment& environment, Channels channels, VantaParameters& parameters)
    : loudnessMeter_(environment), audioBuffer_(environment, static_cast<int>(channels.size())) {
    parameters.loudnessRecording.addTarget(loudnessMeter_.enabled);
    for (const auto& channel : channels) {
        channelMeters_.push_back(std::make_unique<ChannelMeters>(*channel, loudnessMeter_, parameters));
        audio(RecordedAudio::Input).setInput(channel->index(), channel->drySignal());
        audio(RecordedAudio::Output).setInput(channel->index(), channel->signalBeforeDither());
        audio(RecordedAudio::Gain).setInput(channel->index(), channel->totalGain());
    }
}

std::vector<wave::LevelSource*> VantaMeters::levelSources() {
    std::vector<wave::LevelSource*> sources;
    for (int i = 0; i < kCountOf<ProgrammeLevel>; ++i) {
        sources.push_back(&level(static_cast<ProgrammeLevel>(i)));
    }
    for (const auto& meters : channelMeters_) {
        for (int i = 0; i < kCountOf<ChannelLevel>; ++i) {
            sources.push_back(&meters->level(static_cast<ChannelLevel>(i)));
        }
    }
    return sources;
}

wave::LevelSource& VantaMeters::level(ProgrammeLevel which) {
    switch (which) {
        case ProgrammeLevel::Momentary:
            return loudnessMeter_.source(LoudnessMeter::MomentarySource);
        case ProgrammeLevel::ShortTerm:
            return loudnessMeter_.source(LoudnessMeter::ShortTermSource);
        case ProgrammeLevel::Integrated:
            return loudnessMeter_.source(LoudnessMeter::IntegratedSource);
        case ProgrammeLevel::Count:
            break;
    }
    throw std::logic_error("no level of the programme");
}

std::vector<wave::AudioSource*> VantaMeters::audioSources() {
    std::vector<wave::AudioSource*> sources;
    static_assert(kCountOf<RecordedAudio> == RealTimeAudioBuffer::kListCount);
    for (int i = 0; i < kCountOf<RecordedAudio>; ++i) {
        sources.push_back(&audio(static_cast<RecordedAudio>(i)));
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
