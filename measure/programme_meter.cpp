#include "measure/programme_meter.hpp"

#include <algorithm>
#include <cmath>

#include "dsp/metering/true_peak_judge.hpp"
#include "foundation/numbers.hpp"
#include "kernel/scan.hpp"

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
    Channel(wave::Environment& environment, std::int64_t stride)
        : input(environment), weighting(environment), judge(stride) {
        weighting.source = &input;
    }

    std::array<float, kChunk> waiting{};
    wave::Input input;
    LoudnessMeter::ChannelFilter weighting;
    TruePeakJudge judge;
};

ProgrammeMeter::ProgrammeMeter(ChannelLayout layout, double sampleRate)
    : rate_(sampleRate),
      stride_(samplesInSeconds(kStrideSeconds, sampleRate)),
      environment_(kChunk),
      loudness_(environment_) {
    environment_.setSampleRate(static_cast<float>(sampleRate));
    const auto types = channelTypes(layout);
    for (std::size_t i = 0; i < types.size(); ++i) {
        channels_.push_back(std::make_unique<Channel>(environment_, stride_));
        loudness_.setChannel(static_cast<int>(i), types[i], channels_[i]->weighting);
    }
    programme_.channels.resize(channels_.size());
}

ProgrammeMeter::~ProgrammeMeter() {
    environment_.setDestroying();
}

void ProgrammeMeter::process(std::span<const float* const> blocks, std::size_t frames) {
    for (std::size_t done = 0; done < frames;) {
        const std::size_t count = std::min(frames - done, static_cast<std::size_t>(kChunk - pending_));
        for (std::size_t c = 0; c < channels_.size(); ++c) {
            std::copy_n(blocks[c] + done, count, channels_[c]->waiting.begin() + pending_);
        }
        pending_ += static_cast<int>(count);
        done += count;
        if (pending_ == kChunk) runChunk();
    }
}

void ProgrammeMeter::runChunk() {
    // Before the tick, which is where nodes at rest hear of a change.
    for (const auto& channel : channels_) channel->input.setBuffer(channel->waiting.data(), pending_);
    environment_.advanceTick();
    for (std::size_t c = 0; c < channels_.size(); ++c) noteChannel(c, pending_);
    noteLoudness(pending_);
    environment_.run(pending_, 0);
    position_ += pending_;
    pending_ = 0;
}

void ProgrammeMeter::finish() {
    if (pending_ > 0) runChunk();
    const auto frames = static_cast<double>(position_);
    programme_.seconds = secondsAt(position_);
    programme_.samples = frames * static_cast<double>(channels_.size());
    programme_.momentaryGate.merge(loudness_.momentaryGate());
    programme_.shortTermGate.merge(loudness_.shortTermGate());
    completeTruePeaks();
}

void ProgrammeMeter::noteLoudness(int samples) {
    const float* momentary = loudness_.momentaryPower().pullData(samples);
    const float* shortTerm = loudness_.shortTermPower().pullData(samples);
    const auto note = [&](const float* block, double windowSeconds, Programme::Highest& highest) {
        // While the first window fills there is no reading.
        const auto full = static_cast<std::int64_t>(samplesInSeconds(windowSeconds, rate_));
        const int from = static_cast<int>(std::clamp<std::int64_t>(full - 1 - position_, 0, samples));
        if (from == samples) return;
        const int place = placeAbove(block + from, samples - from, highest.value);
        if (place >= 0)
            highest = {static_cast<double>(block[from + place]), secondsAt(position_ + from + place + 1)};
    };
    note(momentary, kMomentarySeconds, programme_.momentary);
    note(shortTerm, kShortTermSeconds, programme_.shortTerm);
    placePoint(samples, momentary, shortTerm);
}

// The last value of a stride stays; the last stride may be shorter.
void ProgrammeMeter::placePoint(int samples, const float* momentary, const float* shortTerm) {
    for (int i = 0; i < samples;) {
        TimelinePoint& point = pointAt(position_ + i);
        const std::int64_t inStride = (position_ + i) % stride_;
        const int last = static_cast<int>(std::min<std::int64_t>(samples, i + stride_ - inStride)) - 1;
        point.seconds = secondsAt(position_ + last + 1);
        if (point.seconds >= kMomentarySeconds) point.momentary = loudnessOf(momentary[last]);
        if (point.seconds >= kShortTermSeconds) point.shortTerm = loudnessOf(shortTerm[last]);
        i = last + 1;
    }
}

TimelinePoint& ProgrammeMeter::pointAt(std::int64_t sample) {
    const auto index = static_cast<std::size_t>(sample / stride_);
    if (points_.size() <= index) points_.resize(index + 1);
    return points_[index];
}

void ProgrammeMeter::noteChannel(std::size_t index, int samples) {
    Channel& channel = *channels_[index];
    Programme::Channel& noted = programme_.channels[index];
    programme_.notFinite += std::count_if(channel.waiting.begin(), channel.waiting.begin() + samples,
                                          [](float x) { return !std::isfinite(x); });
    const float* in = channel.input.pullData(samples);
    noted.squares += sumOfSquares(in, samples);
    for (int i = 0; i < samples;) {
        const std::int64_t inStride = (position_ + i) % stride_;
        const int count = static_cast<int>(std::min<std::int64_t>(samples - i, stride_ - inStride));
        const float peak = kernel::highestMagnitude(in + i, static_cast<std::size_t>(count));
        TimelinePoint& point = pointAt(position_ + i);
        point.samplePeak = std::max(point.samplePeak, peak);
        if (static_cast<double>(peak) > noted.samplePeak.value) {
            const float* place =
                std::find_if(in + i, in + i + count, [=](float x) { return std::abs(x) == peak; });
            noted.samplePeak = {static_cast<double>(peak), secondsAt(position_ + (place - in))};
        }
        i += count;
    }
    channel.judge.process(in, static_cast<std::size_t>(samples));
}

void ProgrammeMeter::completeTruePeaks() {
    if (position_ == 0) return;
    for (std::size_t c = 0; c < channels_.size(); ++c) {
        TruePeakJudge& judge = channels_[c]->judge;
        judge.finish();
        programme_.channels[c].truePeak = {judge.peak(), judge.position() / rate_};
        const auto peaks = judge.segmentPeaks();
        for (std::size_t i = 0; i < points_.size(); ++i)
            points_[i].truePeak = std::max(points_[i].truePeak, peaks[i]);
    }
}

}  // namespace vanta
