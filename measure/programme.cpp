#include "measure/programme.hpp"

#include <algorithm>
#include <cmath>

#include "foundation/numbers.hpp"

namespace vanta {

namespace {

std::optional<double> loudness(double meanSquare) {
    const float level = loudnessOf(meanSquare);
    return level > kNoLoudness ? std::optional<double>(level) : std::nullopt;
}

std::optional<TimedLevel> loudness(const Programme::Highest& highest) {
    const auto level = loudness(highest.value);
    return level ? std::optional<TimedLevel>({*level, highest.seconds}) : std::nullopt;
}

std::optional<TimedLevel> decibels(const Programme::Highest& highest) {
    if (highest.value <= static_cast<double>(kSilence)) return std::nullopt;
    return TimedLevel{dbFromGain(highest.value), highest.seconds};
}

ChannelFigures figuresOf(const Programme::Channel& channel, double samples) {
    ChannelFigures figures;
    figures.samplePeak = decibels(channel.samplePeak);
    figures.truePeak = decibels(channel.truePeak);
    if (figures.samplePeak && channel.squares > 0.0) {
        figures.rms = dbFromGain(std::sqrt(channel.squares / samples));
        figures.crest = figures.samplePeak->level - *figures.rms;
    }
    return figures;
}

}  // namespace

void Programme::merge(const Programme& other) {
    seconds += other.seconds;
    samples += other.samples;
    notFinite += other.notFinite;
    momentaryGate.merge(other.momentaryGate);
    shortTermGate.merge(other.shortTermGate);
    momentary.raise(other.momentary.value, other.momentary.seconds);
    shortTerm.raise(other.shortTerm.value, other.shortTerm.seconds);
    channels.resize(std::max(channels.size(), other.channels.size()));
    for (std::size_t i = 0; i < other.channels.size(); ++i) {
        channels[i].samplePeak.raise(other.channels[i].samplePeak.value,
                                     other.channels[i].samplePeak.seconds);
        channels[i].truePeak.raise(other.channels[i].truePeak.value, other.channels[i].truePeak.seconds);
        channels[i].squares += other.channels[i].squares;
    }
}

ProgrammeFigures Programme::figures() const {
    ProgrammeFigures figures;
    figures.seconds = seconds;
    figures.integrated = loudness(momentaryGate.gatedMeanSquare());
    const LoudnessRange range = shortTermGate.range();
    if (range.low > kNoLoudness) {
        figures.rangeLow = range.low;
        figures.rangeHigh = range.high;
        figures.range = static_cast<double>(range.high) - static_cast<double>(range.low);
    }
    figures.highestMomentary = loudness(momentary);
    figures.highestShortTerm = loudness(shortTerm);

    Channel all;
    for (const Channel& channel : channels) {
        all.samplePeak.raise(channel.samplePeak.value, channel.samplePeak.seconds);
        all.truePeak.raise(channel.truePeak.value, channel.truePeak.seconds);
        all.squares += channel.squares;
        figures.channels.push_back(figuresOf(channel, samples / static_cast<double>(channels.size())));
    }
    figures.total = figuresOf(all, samples);
    return figures;
}

}  // namespace vanta
