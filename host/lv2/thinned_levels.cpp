#include "host/lv2/thinned_levels.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

namespace vanta {
namespace {

/// More than a processor ever has at a time: a greater count is damage.
constexpr int kMostSamples = 1 << 22;

/// Walks numbers in memory. Past the end it reads 0 and has failed.
class Numbers {
public:
    explicit Numbers(std::span<const std::byte> bytes) : bytes_(bytes) {}

    template <typename T>
    T next() {
        T value{};
        if (bytes_.size() < sizeof value) {
            failed_ = true;
            bytes_ = {};
            return value;
        }
        std::memcpy(&value, bytes_.data(), sizeof value);
        bytes_ = bytes_.subspan(sizeof value);
        return value;
    }
    /// A count of things of which each takes so many bytes of what is left.
    int count(std::size_t bytesOfEach) {
        const auto value = next<std::int32_t>();
        failed_ |= value < 0 || static_cast<std::size_t>(value) * bytesOfEach > bytes_.size();
        return failed_ ? 0 : value;
    }
    bool failed() const { return failed_; }
    std::span<const std::byte> rest() const { return bytes_; }

private:
    std::span<const std::byte> bytes_;
    bool failed_ = false;
};

template <typename T>
void append(std::vector<std::byte>& bytes, T value) {
    const auto* first = reinterpret_cast<const std::byte*>(&value);
    bytes.insert(bytes.end(), first, first + sizeof value);
}

void appendAll(std::vector<std::byte>& bytes, std::span<const std::byte> more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

constexpr int groupsOf(int length) {
    return (length + kThinned - 1) / kThinned;
}

/// What is not a number is beyond nothing.
struct Extremes {
    float least = std::numeric_limits<float>::infinity();
    float greatest = -std::numeric_limits<float>::infinity();

    void take(float value) {
        if (value < least) least = value;
        if (value > greatest) greatest = value;
    }
};

void thinFrame(Numbers& numbers, int channels, int length, std::vector<Extremes>& groups) {
    std::ranges::fill(groups, Extremes{});
    for (int c = 0; c < channels; ++c) {
        for (int i = 0; i < length; ++i) {
            groups[static_cast<std::size_t>(i / kThinned)].take(numbers.next<float>());
        }
    }
}

}  // namespace

std::optional<std::vector<std::byte>> thinLevels(std::span<const std::byte> record, int audioSources) {
    Numbers numbers(record);
    std::vector<std::byte> thinned;
    for (int source = 0; source < audioSources; ++source) {
        const int channels = numbers.count(0);
        const int frames = numbers.count(0);
        const int length = numbers.count(0);
        const auto samples = static_cast<std::int64_t>(channels) * frames;
        if (numbers.failed() || samples * length > kMostSamples) return {};
        append(thinned, std::int32_t{frames});
        append(thinned, std::int32_t{length});
        std::vector<Extremes> groups(static_cast<std::size_t>(groupsOf(length)));
        for (int frame = 0; frame < frames && !numbers.failed(); ++frame) {
            thinFrame(numbers, channels, length, groups);
            appendAll(thinned, std::as_bytes(std::span(groups)));
        }
    }
    if (numbers.failed()) return {};
    appendAll(thinned, numbers.rest());
    return thinned;
}

std::optional<std::vector<std::byte>> thickenLevels(std::span<const std::byte> thinned, int audioSources) {
    Numbers numbers(thinned);
    std::vector<std::byte> record;
    for (int source = 0; source < audioSources; ++source) {
        const int frames = numbers.count(0);
        const int length = numbers.count(0);
        if (numbers.failed() || static_cast<std::int64_t>(frames) * std::max(length, 1) > kMostSamples)
            return {};
        for (const int count : {1, frames, length}) append(record, std::int32_t{count});
        for (int frame = 0; frame < frames && !numbers.failed(); ++frame) {
            for (int begin = 0; begin < length; begin += kThinned) {
                const auto least = numbers.next<float>();
                const auto greatest = numbers.next<float>();
                const int end = std::min(begin + kThinned, length);
                for (int i = begin; i < end; ++i) append(record, (i & 1) != 0 ? greatest : least);
            }
        }
    }
    if (numbers.failed()) return {};
    appendAll(record, numbers.rest());
    return record;
}

}  // namespace vanta
