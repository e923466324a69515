#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <initializer_list>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "limiter/processor/vanta_processor.hpp"
#include "tests/support/signals.hpp"

/// Drives a whole limiter as a host does: settings first, then blocks of audio.
namespace vanta::test {

using Style = LimitingStyle;

inline constexpr auto kStyles = [] {
    std::array<Style, kStyleTable.size()> styles{};
    std::ranges::transform(kStyleTable, styles.begin(), &StyleRow::style);
    return styles;
}();

inline std::string nameOf(Style style) {
    return std::string(kStyleTable[static_cast<std::size_t>(style)].name);
}

/// One signal a channel, in the layout's order, all of one length.
using Channels = std::vector<Signal>;

struct LimiterSetup {
    Style style = Style::Transparent;
    int oversamplingIndex = 0;  ///< the factor is 2 to this power
    bool truePeak = false;
    float gainDb = 0.0f;
    float outputLevelDb = 0.0f;
    double rate = 44100.0;
    ChannelLayout layout = kStereoLayout;
    const StylePatch* patch = nullptr;  ///< in place of the style
    /// What else is set before the first block.
    std::function<void(VantaProcessor&)> further = {};

    int factor() const { return 1 << oversamplingIndex; }
};

inline std::string describe(const LimiterSetup& setup) {
    return fmt::format("{} {}x, true peak {}, gain {} dB, output level {} dB, {} Hz, {} channels",
                       nameOf(setup.style), setup.factor(), setup.truePeak ? "on" : "off", setup.gainDb,
                       setup.outputLevelDb, setup.rate, channelCount(setup.layout));
}

class LimiterRig {
public:
    explicit LimiterRig(const LimiterSetup& setup) : limiter_(setup.layout, setup.patch) {
        limiter_.prepare(static_cast<float>(setup.rate));
        limiter_.style.setMapped(setup.style);
        limiter_.oversampling.setValue(static_cast<float>(setup.oversamplingIndex), 0);
        limiter_.truePeakLimiting.setMapped(setup.truePeak);
        limiter_.gain.setValue(setup.gainDb, 0);
        limiter_.outputLevel.setValue(setup.outputLevelDb, 0);
        if (setup.further) setup.further(limiter_);
    }

    VantaProcessor& limiter() { return limiter_; }
    std::size_t latency() const { return static_cast<std::size_t>(limiter_.latency()); }

    /// Goes on with `in`: as many samples come out, late by the latency. `sideChain` follows the main
    /// channels, or is empty.
    Channels process(const Channels& in, std::span<const int> blocks, const Channels& sideChain = {}) {
        const std::size_t total = in.front().size();
        Channels out(in.size(), Signal(total));
        std::size_t done = 0;
        for (std::size_t k = 0; done < total; ++k) {
            const auto wanted = static_cast<std::size_t>(blocks[k % blocks.size()]);
            const std::size_t count = std::min(wanted, total - done);
            processBlock(in, sideChain, out, done, count);
            done += count;
        }
        return out;
    }
    Channels process(const Channels& in, int block = 512, const Channels& sideChain = {}) {
        const int blocks[] = {block};
        return process(in, std::span<const int>(blocks), sideChain);
    }

    /// The same, with the latency taken away: sample i of the result belongs to sample i of the input.
    Channels processAligned(Channels in, int block = 512, Channels sideChain = {}) {
        const std::size_t late = latency();
        for (Channels* signals : {&in, &sideChain}) {
            for (Signal& signal : *signals) signal.resize(signal.size() + late, 0.0f);
        }
        Channels out = process(in, block, sideChain);
        for (Signal& signal : out) {
            signal.erase(signal.begin(), signal.begin() + static_cast<std::ptrdiff_t>(late));
        }
        return out;
    }

    /// One block, from sample `at` of `in` to the same place of `out`.
    void processBlock(const Channels& in, const Channels& sideChain, Channels& out, std::size_t at,
                      std::size_t count) {
        std::array<const float*, 2 * kMaxChannels> inputs{};
        std::array<float*, kMaxChannels> outputs{};
        std::size_t inputCount = 0;
        for (const Channels* signals : {&in, &sideChain}) {
            for (const Signal& signal : *signals) inputs[inputCount++] = signal.data() + at;
        }
        for (std::size_t c = 0; c < out.size(); ++c) outputs[c] = out[c].data() + at;
        limiter_.processBlock(inputs.data(), static_cast<int>(inputCount), outputs.data(),
                              static_cast<int>(out.size()), static_cast<int>(count));
    }

private:
    VantaProcessor limiter_;
};

/// What a fresh limiter makes of a signal, aligned with it.
inline Channels limited(const LimiterSetup& setup, const Channels& in, int block = 512) {
    return LimiterRig(setup).processAligned(in, block);
}

inline double peak(const Channels& channels) {
    double largest = 0.0;
    for (const Signal& signal : channels) largest = std::max(largest, peak(std::span<const float>(signal)));
    return largest;
}

/// Largest difference of two sets of signals, from sample `from` on, in dB of full scale.
inline double nullDb(const Channels& a, const Channels& b, std::size_t from = 0) {
    double largest = -400.0;
    for (std::size_t c = 0; c < a.size(); ++c) {
        largest = std::max(largest, nullDb(std::span(a[c]).subspan(from), std::span(b[c]).subspan(from)));
    }
    return largest;
}

/// Prints a line of a measurement where VANTA_VERBOSE is set: the figures behind the tolerances.
template <typename... Arguments>
void report(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    static const bool verbose = std::getenv("VANTA_VERBOSE") != nullptr;
    if (verbose) fmt::print(format, std::forward<Arguments>(arguments)...);
}

}  // namespace vanta::test
