#include "host/offline/measuring_streams.hpp"

#include <algorithm>
#include <array>

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

MeasuringWriter::MeasuringWriter(ChannelLayout layout, double sampleRate) : meter(layout, sampleRate) {}

void MeasuringWriter::write(std::span<const float* const> channels, std::size_t frames) {
    meter.process(channels, frames);
}

void MeasuringWriter::finish() {
    meter.finish();
}

}  // namespace vanta
