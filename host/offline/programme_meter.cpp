#include "host/offline/programme_meter.hpp"

#include <algorithm>
#include <cmath>

#include "dsp/kernel/scan.hpp"
#include "foundation/numbers.hpp"

namespace vanta {

namespace {

constexpr double kStrideSeconds = 0.1;
constexpr double kMomentarySeconds = 0.4;
constexpr double kShortTermSeconds = 3.0;

double sumOfSquares(const float* in, int count) {
    double sums[4] = {};
    for (int i = 0; i < count; ++i) sums[i & 3] += static_cast<double>(in[i]) * static_cast<double>(in[i]);
    return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

/// The first place of a block's largest value, if that is above `limit`; else -1.
int placeAbove(const float* block, int samples, double limit) {
    const float highest = kernel::highest(block, static_cast<std::size_t>(samples));
    if (static_cast<double>(highest) <= limit) return -1;
    return static_cast<int>(std::find(block, block + samples, highest) - block);
}

}  // namespace

/// One channel's part of the graph, and the samples that wait for it.
class ProgrammeMeter::Channel {
public:
    Channel(wave::Environment& environment, sr::TruePeakExposer::Style& style)
        : input(environment), weighting(environment), exposer(environment, style) {
        weighting.source = &input;
        exposer.source = &input;
    }

    std::array<float, kChunk> waiting{};
    wave::Input input;
    LoudnessMeter::ChannelFilter weighting;
    sr::TruePeakExposer exposer;
};

ProgrammeMeter::ProgrammeMeter(ChannelLayout layout, double sampleRate)
    : rate(sampleRate),
      stride(samplesInSeconds(kStrideSeconds, sampleRate)),
      environment(kChunk),
      loudness(environment),
      exposerStyle(environment) {
    environment.setSampleRate(static_cast<float>(sampleRate));
    const auto types = channelTypes(layout);
    for (std::size_t i = 0; i < types.size(); ++i) {
        channels.push_back(std::make_unique<Channel>(environment, exposerStyle));
        loudness.setChannel(static_cast<int>(i), types[i], channels[i]->weighting);
    }
    programme_.channels.resize(channels.size());
}

ProgrammeMeter::~ProgrammeMeter() {
    environment.setDestroying();
}

void ProgrammeMeter::process(std::span<const float* const> blocks, std::size_t frames) {
    for (std::size_t done = 0; done < frames;) {
        const std::size_t count = std::min(frames - done, static_cast<std::size_t>(kChunk - pending));
        for (std::size_t c = 0; c < channels.size(); ++c) {
            std::copy_n(blocks[c] + done, count, channels[c]->waiting.begin() + pending);
        }
        pending += static_cast<int>(count);
        done += count;
        if (pending == kChunk) runChunk();
    }
}

void ProgrammeMeter::runChunk() {
    environment.advanceTick();
    for (std::size_t c = 0; c < channels.size(); ++c) {
        channels[c]->input.setBuffer(channels[c]->waiting.data(), pending);
        noteChannel(c, pending);
    }
    noteLoudness(pending);
    environment.run(pending, 0);
    position += pending;
    pending = 0;
}

void ProgrammeMeter::finish() {
    if (pending > 0) runChunk();
    const auto frames = static_cast<double>(position);
    programme_.seconds = secondsAt(position);
    programme_.samples = frames * static_cast<double>(channels.size());
    programme_.momentaryGate.merge(loudness.momentaryGate());
    programme_.shortTermGate.merge(loudness.shortTermGate());
    runOutTruePeaks();
}

void ProgrammeMeter::noteLoudness(int samples) {
    const float* momentary = loudness.momentaryPower().pullData(samples);
    const float* shortTerm = loudness.shortTermPower().pullData(samples);
    const auto note = [&](const float* block, double windowSeconds, Programme::Highest& highest) {
        // While the first window fills there is no reading.
        const auto full = static_cast<std::int64_t>(samplesInSeconds(windowSeconds, rate));
        const int from = static_cast<int>(std::clamp<std::int64_t>(full - 1 - position, 0, samples));
        if (from == samples) return;
        const int place = placeAbove(block + from, samples - from, highest.value);
        if (place >= 0)
            highest = {static_cast<double>(block[from + place]), secondsAt(position + from + place + 1)};
    };
    note(momentary, kMomentarySeconds, programme_.momentary);
    note(shortTerm, kShortTermSeconds, programme_.shortTerm);
    placePoint(samples, momentary, shortTerm);
}

// The last value of a stride stays; the last stride may be shorter.
void ProgrammeMeter::placePoint(int samples, const float* momentary, const float* shortTerm) {
    for (int i = 0; i < samples;) {
        TimelinePoint& point = pointAt(position + i);
        const std::int64_t inStride = (position + i) % stride;
        const int last = static_cast<int>(std::min<std::int64_t>(samples, i + stride - inStride)) - 1;
        point.seconds = secondsAt(position + last + 1);
        if (point.seconds >= kMomentarySeconds) point.momentary = loudnessOf(momentary[last]);
        if (point.seconds >= kShortTermSeconds) point.shortTerm = loudnessOf(shortTerm[last]);
        i = last + 1;
    }
}

TimelinePoint& ProgrammeMeter::pointAt(std::int64_t sample) {
    const auto index = static_cast<std::size_t>(sample / stride);
    if (points.size() <= index) points.resize(index + 1);
    return points[index];
}

void ProgrammeMeter::noteChannel(std::size_t index, int samples) {
    Channel& channel = *channels[index];
    Programme::Channel& noted = programme_.channels[index];
    programme_.notFinite += std::count_if(channel.waiting.begin(), channel.waiting.begin() + samples,
                                          [](float x) { return !std::isfinite(x); });
    const float* in = channel.input.pullData(samples);
    noted.squares += sumOfSquares(in, samples);
    for (int i = 0; i < samples;) {
        const std::int64_t inStride = (position + i) % stride;
        const int count = static_cast<int>(std::min<std::int64_t>(samples - i, stride - inStride));
        const float peak = kernel::highestMagnitude(in + i, static_cast<std::size_t>(count));
        TimelinePoint& point = pointAt(position + i);
        point.samplePeak = std::max(point.samplePeak, peak);
        if (static_cast<double>(peak) > noted.samplePeak.value) {
            const float* place =
                std::find_if(in + i, in + i + count, [=](float x) { return std::abs(x) == peak; });
            noted.samplePeak = {static_cast<double>(peak), secondsAt(position + (place - in))};
        }
        i += count;
    }
    noteTruePeak(index, channel.exposer.pullData(samples), samples);
}

// The envelope is late by the interpolator.
void ProgrammeMeter::noteTruePeak(std::size_t index, const float* envelope, int samples) {
    Programme::Highest& highest = programme_.channels[index].truePeak;
    const std::int64_t first = position - exposerStyle.delay();
    for (int i = static_cast<int>(std::clamp<std::int64_t>(-first, 0, samples)); i < samples;) {
        const std::int64_t inStride = (first + i) % stride;
        const int count = static_cast<int>(std::min<std::int64_t>(samples - i, stride - inStride));
        const float peak = kernel::highest(envelope + i, static_cast<std::size_t>(count));
        TimelinePoint& point = pointAt(first + i);
        point.truePeak = std::max(point.truePeak, peak);
        const int place = placeAbove(envelope + i, count, highest.value);
        if (place >= 0) highest = {static_cast<double>(peak), secondsAt(first + i + place)};
        i += count;
    }
}

void ProgrammeMeter::runOutTruePeaks() {
    for (int left = exposerStyle.delay(); left > 0;) {
        const int count = std::min(left, kChunk);
        environment.advanceTick();
        for (std::size_t c = 0; c < channels.size(); ++c) {
            channels[c]->input.setBuffer(nullptr, 0);
            noteTruePeak(c, channels[c]->exposer.pullData(count), count);
        }
        // Only the position is to move: what was gathered is complete.
        environment.run(count, wave::Environment::kPositionOnly);
        position += count;
        left -= count;
    }
}

}  // namespace vanta
