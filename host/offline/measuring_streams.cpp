#include "host/offline/measuring_streams.hpp"

#include <algorithm>
#include <array>
#include <cmath>

namespace vanta {

MeasuringReader::MeasuringReader(AudioReader& audioSource, ChannelLayout layout, double sampleRate)
    : source(audioSource), meter(layout, sampleRate) {}

std::size_t MeasuringReader::read(std::span<float* const> channels, std::size_t frames) {
    const std::size_t count = source.read(channels, frames);
    std::array<const float*, kMaxChannels> from{};
    std::ranges::copy(channels, from.begin());
    meter.process(std::span<const float* const>(from.data(), channels.size()), count);
    return count;
}

const Programme& MeasuringReader::finish() {
    meter.finish();
    return meter.programme();
}

StreamJudge::StreamJudge(int channels) {
    for (int i = 0; i < channels; ++i) judges.push_back(std::make_unique<TruePeakJudge>());
}

void StreamJudge::process(std::span<const float* const> channels, std::size_t frames) {
    finite.resize(frames);
    for (std::size_t c = 0; c < channels.size(); ++c) {
        std::transform(channels[c], channels[c] + frames, finite.begin(),
                       [](float sample) { return std::isfinite(sample) ? sample : 0.0f; });
        judges[c]->process(finite.data(), frames);
    }
}

double StreamJudge::finish() {
    double peak = 0.0;
    for (const auto& judge : judges) {
        judge->finish();
        peak = std::max(peak, judge->peak());
    }
    return peak;
}

MeasuringWriter::MeasuringWriter(ChannelLayout layout, double sampleRate)
    : meter(layout, sampleRate), judge(vanta::channelCount(layout)) {}

void MeasuringWriter::write(std::span<const float* const> channels, std::size_t frames) {
    meter.process(channels, frames);
    judge.process(channels, frames);
}

void MeasuringWriter::finish() {
    meter.finish();
    peak = judge.finish();
}

}  // namespace vanta
