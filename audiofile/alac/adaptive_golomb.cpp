#include "audiofile/alac/adaptive_golomb.hpp"

#include <algorithm>
#include <bit>

namespace vanta {

namespace {

constexpr int kMeanShift = 9;
constexpr std::uint32_t kLargestMean = 0xFFFF;
constexpr std::uint32_t kSmallMean = 128;
constexpr std::uint32_t kLongestRun = 65535;
constexpr std::uint32_t kLongestPrefix = 9;

/// A quotient in ones and the rest in `parameter` bits, or behind nine ones the value as it is.
void put(BitWriter& writer, std::uint32_t value, std::uint32_t divisor, int parameter, int bits) {
    const std::uint32_t quotient = value / divisor;
    if (quotient >= kLongestPrefix) {
        writer.put((1U << kLongestPrefix) - 1, static_cast<int>(kLongestPrefix));
        return writer.put(value, bits);
    }
    writer.put((1U << (quotient + 1)) - 2, static_cast<int>(quotient) + 1);
    const std::uint32_t rest = value - quotient * divisor;
    if (rest == 0) return writer.put(0, parameter - 1);
    writer.put(rest + 1, parameter);
}

std::uint32_t folded(std::int32_t difference) {
    const auto magnitude =
        static_cast<std::uint32_t>(difference < 0 ? -std::int64_t{difference} : difference);
    return 2 * magnitude - (difference < 0 ? 1 : 0);
}

}  // namespace

void putGolomb(BitWriter& writer, std::span<const std::int32_t> differences, int bits) {
    using Parameters = GolombParameters;
    std::uint32_t mean = Parameters::kInitialHistory;
    std::uint32_t behindRun = 0;
    for (std::size_t i = 0; i < differences.size();) {
        const int parameter =
            std::min(31 - std::countl_zero((mean >> kMeanShift) + 3), Parameters::kMostBits);
        const std::uint32_t value = folded(differences[i++]) - behindRun;
        put(writer, value, (1U << parameter) - 1, parameter, bits);
        mean += Parameters::kHistory * (value + behindRun) - (Parameters::kHistory * mean >> kMeanShift);
        if (value > kLargestMean) mean = kLargestMean;
        behindRun = 0;
        if (mean >= kSmallMean || i == differences.size()) continue;
        std::uint32_t run = 0;
        while (i < differences.size() && differences[i] == 0 && run < kLongestRun) {
            ++i;
            ++run;
        }
        // What follows a run is not zero, so that it can be counted from one.
        behindRun = run < kLongestRun ? 1 : 0;
        const int runBits = std::countl_zero(mean) - 24 + static_cast<int>((mean + 16) >> 6);
        constexpr std::uint32_t kMask = (1U << Parameters::kMostBits) - 1;
        put(writer, run, ((1U << runBits) - 1) & kMask, runBits, 16);
        mean = 0;
    }
}

}  // namespace vanta
