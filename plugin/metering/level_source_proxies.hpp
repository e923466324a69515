#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "foundation/binary_data.hpp"
#include "wave/level_source.hpp"

namespace vanta {

/// The model's image of one level source of the processor.
class LevelSourceProxy final : public wave::LevelSource {
public:
    enum Command : std::uint8_t { kResetPeak = 1, kResetMeasurement = 2 };

    Detection detection() const override { return static_cast<Detection>(word_); }
    std::int32_t infoWord() const override { return word_; }
    float value(Info info) override { return values_[static_cast<std::size_t>(info)]; }
    void resetPeak() override { command_ |= kResetPeak; }
    void resetMeasurement() override { command_ |= kResetMeasurement; }

    /// Five readings and the info word.
    void read(BinaryDataReader& reader);
    /// What the interface has asked for since the last call.
    std::uint8_t takeCommand();
    /// Carries a command out on the source that a proxy stands for.
    static void apply(std::uint8_t command, wave::LevelSource& source);

private:
    std::int32_t word_ = Maximum;
    std::array<float, InfoCount> values_{-180.0f, -180.0f, -180.0f, -180.0f, -180.0f};
    std::uint8_t command_ = 0;
};

/// The model's image of recorded audio: holds what has come in since the last `unlock`.
class AudioSourceProxy final : public wave::AudioSource {
public:
    /// Samples a channel that are held at the most; then the old ones are dropped, not the new.
    static constexpr int kMaxSamples = 153600;

    void lock() override {}
    void unlock() override { frames_ = 0; }
    int blockLength() const override { return length_; }
    const float* block(int frame, int channel) const override;
    int frameCount() const override { return frames_; }
    int channelCount() const override { return channels_; }

    /// Appends frames to those that are held. A malformed record fails the reader.
    void read(BinaryDataReader& reader);

private:
    std::size_t placeOf(int frame, int channel) const;

    int length_ = 0;
    int frames_ = 0;
    int channels_ = 0;
    std::vector<float> samples_;
};

/// The model's image of a spectrum: keeps the larger of what came in until it is consumed.
class SpectrumSourceProxy final : public wave::SpectrumSource {
public:
    void lock() override {}
    void unlock() override { consumed_ = true; }
    std::span<const float> data() const override { return values_; }
    std::int32_t spectrumCount() const override { return count_; }

    void read(BinaryDataReader& reader);

private:
    bool consumed_ = true;
    std::int32_t count_ = 0;
    std::vector<float> values_;
    std::vector<float> scratch_;
};

/// One reading over the sources of all channels: the most extreme of theirs.
class CombinedLevelSource final : public wave::LevelSource {
public:
    static constexpr std::size_t kCapacity = 10;

    void clear() { sources_.fill(nullptr); }
    /// Null empties a place.
    void set(std::size_t place, wave::LevelSource* source) { sources_[place] = source; }

    Detection detection() const override;
    float value(Info info) override;
    void resetPeak() override;
    void resetMeasurement() override;

private:
    std::array<wave::LevelSource*, kCapacity> sources_{};
};

}  // namespace vanta
