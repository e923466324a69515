#include "host/offline/programme_meter.hpp"

#include <algorithm>
#include <cmath>

#include "dsp/kernel/scan.hpp"
#include "dsp/metering/true_peak_judge.hpp"
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
    explicit Channel(wave::Environment& environment) : input(environment), weighting(environment) {
        weighting.source = &input;
    }

    std::array<float, kChunk> waiting{};
    wave::Input input;
    LoudnessMeter::ChannelFilter weighting;
    TruePeakJudge judge;
};

ProgrammeMeter::ProgrammeMeter(ChannelLayout layout, double sampleRate)
    : rate(sampleRate),
      stride(samplesInSeconds(kStrideSeconds, sampleRate)),
      environment(kChunk),
      loudness(environment) {
    environment.setSampleRate(static_cast<float>(sampleRate));
    const auto types = channelTypes(layout);
    for (std::size_t i = 0; i < types.size(); ++i) {
        channels.push_back(std::make_unique<Channel>(environment));
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
    noteTruePeak(index, in, samples, position);
}

// `in` begins at the sample `at`. What it decides lies before it, by what the judge must see ahead.
void ProgrammeMeter::noteTruePeak(std::size_t index, const float* in, int samples, std::int64_t at) {
    TruePeakJudge& judge = channels[index]->judge;
    for (int i = 0; i < samples;) {
        const std::int64_t decided = std::max<std::int64_t>(at + i - TruePeakJudge::kHalfWidth, 0);
        const int count = static_cast<int>(std::min<std::int64_t>(samples - i, stride - decided % stride));
        judge.process(in + i, static_cast<std::size_t>(count));
        // What rings on behind the end belongs to the end.
        TimelinePoint& point =
            points[std::min(static_cast<std::size_t>(decided / stride), points.size() - 1)];
        point.truePeak = std::max(point.truePeak, static_cast<float>(judge.takeLatestPeak()));
        i += count;
    }
}

void ProgrammeMeter::runOutTruePeaks() {
    if (position == 0) return;
    constexpr std::array<float, 2 * TruePeakJudge::kHalfWidth> silence{};
    for (std::size_t c = 0; c < channels.size(); ++c) {
        noteTruePeak(c, silence.data(), static_cast<int>(silence.size()), position);
        const TruePeakJudge& judge = channels[c]->judge;
        const double place = std::clamp(judge.position(), 0.0, static_cast<double>(position - 1));
        programme_.channels[c].truePeak = {judge.peak(), place / rate};
    }
}

}  // namespace vanta
