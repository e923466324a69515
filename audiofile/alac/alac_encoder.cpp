#include "audiofile/alac/alac_encoder.hpp"

#include <cstdlib>
#include <limits>

#include "audiofile/alac/adaptive_golomb.hpp"
#include "audiofile/chunks/packed_number.hpp"

namespace vanta {

namespace {

constexpr int kMixBits = 2;
constexpr std::uint32_t kEndOfPacket = 7;

struct Pair {
    std::int32_t first;
    std::int32_t second;
};

/// Left and right as a weighted mean and their difference; as they are for a weight of 0.
Pair mixed(std::int32_t left, std::int32_t right, int weight) {
    if (weight == 0) return {left, right};
    const std::int64_t sum = std::int64_t{weight} * left + std::int64_t{(1 << kMixBits) - weight} * right;
    return {static_cast<std::int32_t>(sum >> kMixBits), left - right};
}

}  // namespace

AlacEncoder::AlacEncoder(int channels, int bits)
    : channels_(channels),
      bits_(bits),
      shift_(bits == 32   ? 16
             : bits >= 24 ? 8
                          : 0) {}

std::string AlacEncoder::packet(std::span<const std::int32_t> samples) {
    const std::size_t frames = samples.size() / width();
    split(samples);
    BitWriter writer;
    // The format knows packets without prediction, too, which noise would be shorter in. Neither libsndfile
    // nor ffmpeg reads them at all word lengths.
    putHeader(writer, frames);
    putPredicted(writer, frames);
    writer.put(kEndOfPacket, 3);
    return writer.take();
}

void AlacEncoder::split(std::span<const std::int32_t> samples) {
    const std::size_t frames = samples.size() / width();
    for (auto& plane : planes_) plane.resize(frames);
    lowest_.clear();
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const std::int32_t sample = samples[i] >> (32 - bits_);
        planes_[i % width()][i / width()] = sample >> shift_;
        if (shift_ > 0) lowest_.push_back(static_cast<std::uint32_t>(sample) & ((1U << shift_) - 1));
    }
}

/// Mixes the two by the weight that leaves the smallest steps.
int AlacEncoder::mix() {
    if (channels_ == 1) return 0;
    auto& [left, right] = planes_;
    int best = 0;
    std::int64_t least = std::numeric_limits<std::int64_t>::max();
    for (int weight = 0; weight <= 1 << kMixBits; ++weight) {
        std::int64_t steps = 0;
        Pair last{0, 0};
        for (std::size_t i = 0; i < left.size(); ++i) {
            const Pair now = mixed(left[i], right[i], weight);
            steps += std::abs(std::int64_t{now.first} - last.first) +
                     std::abs(std::int64_t{now.second} - last.second);
            last = now;
        }
        if (steps < least) best = weight;
        least = std::min(least, steps);
    }
    for (std::size_t i = 0; i < left.size(); ++i) {
        const Pair pair = mixed(left[i], right[i], best);
        left[i] = pair.first;
        right[i] = pair.second;
    }
    return best;
}

void AlacEncoder::putHeader(BitWriter& writer, std::size_t frames) const {
    const bool isPartial = frames < kPacketFrames;
    writer.put(static_cast<std::uint32_t>(channels_ - 1), 3);
    writer.put(0, 4 + 12);
    writer.put(isPartial, 1);
    writer.put(static_cast<std::uint32_t>(shift_ / 8), 2);
    writer.put(0, 1);
    if (isPartial) writer.put(static_cast<std::uint32_t>(frames), 32);
}

void AlacEncoder::putPredicted(BitWriter& writer, std::size_t frames) {
    const int weight = mix();
    writer.put(channels_ == 2 ? kMixBits : 0, 8);
    writer.put(static_cast<std::uint32_t>(weight), 8);
    BitWriter coded;
    for (std::size_t c = 0; c < width(); ++c) {
        writer.put(LinearPredictor::kShift, 8);
        constexpr std::uint32_t kWholeHistory = 4;
        writer.put(kWholeHistory << 5 | LinearPredictor::kOrder, 8);
        for (const std::int16_t coefficient : predictors_[c].coefficients())
            writer.put(static_cast<std::uint16_t>(coefficient), 16);
        differences_.resize(frames);
        predictors_[c].run(planes_[c], differences_, predictedBits());
        putGolomb(coded, differences_, predictedBits());
    }
    for (const std::uint32_t bits : lowest_) writer.put(bits, shift_);
    writer.append(coded);
}

std::string AlacEncoder::cookie(int sampleRate) const {
    const auto number = [](std::uint64_t value, std::size_t bytes) {
        return packed(value, bytes, Endian::Big);
    };
    using Parameters = GolombParameters;
    return number(kPacketFrames, 4) + number(0, 1) + number(static_cast<unsigned>(bits_), 1) +
           number(Parameters::kHistory, 1) + number(Parameters::kInitialHistory, 1) +
           number(Parameters::kMostBits, 1) + number(static_cast<unsigned>(channels_), 1) +
           number(Parameters::kMostRun, 2) + number(0, 4) + number(0, 4) +
           number(static_cast<unsigned>(sampleRate), 4);
}

}  // namespace vanta
