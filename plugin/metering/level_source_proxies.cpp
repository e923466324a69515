#include "plugin/metering/level_source_proxies.hpp"

#include <algorithm>

namespace vanta {

namespace {

/// Larger than anything that a processor sends; a count beyond it is no count.
constexpr int kMaxValues = 1 << 22;

bool plausible(int count) { return count >= 0 && count <= kMaxValues; }

void readInto(BinaryDataReader& reader, std::span<float> values) {
    for (float& value : values) value = reader.readFloat();
}

}  // namespace

void LevelSourceProxy::read(BinaryDataReader& reader) {
    readInto(reader, values);
    word = reader.readInt();
}

std::uint8_t LevelSourceProxy::takeCommand() {
    const std::uint8_t taken = command;
    command = 0;
    return taken;
}

void LevelSourceProxy::apply(std::uint8_t command, LevelSource& source) {
    if (command & kResetPeak) source.resetPeak();
    if (command & kResetMeasurement) source.resetMeasurement();
}

const float* AudioSourceProxy::block(int frame, int channel) const {
    if (frame < 0 || frame >= frames) return nullptr;
    return samples.data() + static_cast<std::size_t>((channels * frame + channel) * length);
}

void AudioSourceProxy::read(BinaryDataReader& reader) {
    const int newChannels = reader.readInt();
    const int received = reader.readInt();
    const int newLength = reader.readInt();
    if (reader.failed() || !plausible(newChannels) || !plausible(received) || !plausible(newLength)) return;
    if (newChannels != channels || newLength != length) {
        channels = newChannels;
        length = newLength;
        frames = 0;
    }
    if (static_cast<long long>(frames + received) * length > kMaxSamples) frames = 0;
    const auto frameSize = static_cast<std::size_t>(channels) * static_cast<std::size_t>(length);
    const std::size_t from = static_cast<std::size_t>(frames) * frameSize;
    const std::size_t count = static_cast<std::size_t>(received) * frameSize;
    if (count > static_cast<std::size_t>(kMaxValues)) return;
    if (samples.size() < from + count) samples.resize(from + count);
    readInto(reader, std::span(samples).subspan(from, count));
    frames += received;
}

void SpectrumSourceProxy::read(BinaryDataReader& reader) {
    const int newCount = reader.readInt();
    const int size = reader.readInt();
    if (reader.failed() || size <= 0 || !plausible(size)) return;
    count = newCount;
    const auto length = static_cast<std::size_t>(size);
    scratch.resize(length);
    readInto(reader, scratch);
    if (values.size() == length && !consumed) {
        std::transform(values.begin(), values.end(), scratch.begin(), values.begin(),
                       [](float a, float b) { return std::max(a, b); });
    } else {
        values = scratch;
        consumed = false;
    }
}

LevelSource::Detection CombinedLevelSource::detection() const {
    return sources[0] ? sources[0]->detection() : Maximum;
}

float CombinedLevelSource::value(Info info) {
    if (!sources[0]) return -180.0f;
    const bool largest = detection() == Maximum;
    float result = sources[0]->value(info);
    for (std::size_t i = 1; i < sources.size(); ++i) {
        if (!sources[i]) continue;
        const float other = sources[i]->value(info);
        result = largest ? std::max(result, other) : std::min(result, other);
    }
    return result;
}

void CombinedLevelSource::resetPeak() {
    for (LevelSource* source : sources) {
        if (source) source->resetPeak();
    }
}

void CombinedLevelSource::resetMeasurement() {
    for (LevelSource* source : sources) {
        if (source) source->resetMeasurement();
    }
}

}  // namespace vanta
