#include "plugin/metering/level_source_proxies.hpp"

#include <algorithm>

namespace vanta {

namespace {

// Larger than anything that a processor sends; a larger count is damage.
constexpr int kMostChannels = 64;
constexpr int kLongestBlock = 1 << 16;
constexpr int kMostValues = 1 << 22;

bool isWithin(int count, int most) {
    return count >= 0 && count <= most;
}

/// Everything that follows in a record that makes no sense makes none either.
void refuse(BinaryDataReader& reader) {
    reader.stream().setstate(std::ios::failbit);
}

}  // namespace

void LevelSourceProxy::read(BinaryDataReader& reader) {
    reader.readFloats(values_);
    word_ = reader.readInt();
}

std::uint8_t LevelSourceProxy::takeCommand() {
    const std::uint8_t taken = command_;
    command_ = 0;
    return taken;
}

void LevelSourceProxy::apply(std::uint8_t command, wave::LevelSource& source) {
    if (command & kResetPeak) source.resetPeak();
    if (command & kResetMeasurement) source.resetMeasurement();
}

const float* AudioSourceProxy::block(int frame, int channel) const {
    if (frame < 0 || frame >= frames_) return nullptr;
    return samples_.data() + placeOf(frame, channel);
}

std::size_t AudioSourceProxy::placeOf(int frame, int channel) const {
    return static_cast<std::size_t>(channels_ * frame + channel) * static_cast<std::size_t>(length_);
}

void AudioSourceProxy::read(BinaryDataReader& reader) {
    const int newChannels = reader.readInt();
    const int received = reader.readInt();
    const int newLength = reader.readInt();
    if (reader.failed()) return;
    const bool plausible = isWithin(newChannels, kMostChannels) && isWithin(newLength, kLongestBlock) &&
                           isWithin(received, kMostValues);
    const long long count = plausible ? static_cast<long long>(received) * newChannels * newLength : -1;
    if (count < 0 || count > kMostValues) return refuse(reader);
    if (newChannels != channels_ || newLength != length_) {
        channels_ = newChannels;
        length_ = newLength;
        frames_ = 0;
    }
    if (count == 0) return;
    if (static_cast<long long>(frames_ + received) * length_ > kMaxSamples) frames_ = 0;
    const std::size_t from = placeOf(frames_, 0);
    const auto size = static_cast<std::size_t>(count);
    if (samples_.size() < from + size) samples_.resize(from + size);
    reader.readFloats(std::span(samples_).subspan(from, size));
    if (!reader.failed()) frames_ += received;
}

void SpectrumSourceProxy::read(BinaryDataReader& reader) {
    const int newCount = reader.readInt();
    const int size = reader.readInt();
    if (reader.failed()) return;
    count_ = newCount;
    if (size <= 0) return;
    if (size > kMostValues) return refuse(reader);
    scratch_.resize(static_cast<std::size_t>(size));
    reader.readFloats(scratch_);
    if (values_.size() == scratch_.size() && !consumed_) {
        std::transform(values_.begin(), values_.end(), scratch_.begin(), values_.begin(),
                       [](float a, float b) { return std::max(a, b); });
    } else {
        values_ = scratch_;
        consumed_ = false;
    }
}

wave::LevelSource::Detection CombinedLevelSource::detection() const {
    return sources_[0] ? sources_[0]->detection() : Maximum;
}

float CombinedLevelSource::value(Info info) {
    if (!sources_[0]) return -180.0f;
    const bool largest = detection() == Maximum;
    float result = sources_[0]->value(info);
    for (std::size_t i = 1; i < sources_.size(); ++i) {
        if (!sources_[i]) continue;
        const float other = sources_[i]->value(info);
        result = largest ? std::max(result, other) : std::min(result, other);
    }
    return result;
}

void CombinedLevelSource::resetPeak() {
    for (wave::LevelSource* source : sources_) {
        if (source) source->resetPeak();
    }
}

void CombinedLevelSource::resetMeasurement() {
    for (wave::LevelSource* source : sources_) {
        if (source) source->resetMeasurement();
    }
}

}  // namespace vanta
