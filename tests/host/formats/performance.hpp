#pragma once

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "tests/host/formats/format_host.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {

using Channels = std::vector<Signal>;

/// Loud and quiet by turns, another in each channel.
inline Channels programme(int channels, std::size_t length) {
    Channels made;
    for (int c = 0; c < channels; ++c) {
        Signal signal = pinkNoise(static_cast<std::uint64_t>(c) + 5, length, 0.12);
        const Signal beats = bursts(180.0 + 70.0 * c, 48000.0, length, 2400, 5600, 0.6);
        std::ranges::transform(signal, beats, signal.begin(), std::plus<float>());
        made.push_back(std::move(signal));
    }
    return made;
}

/// What is played how.
struct Performance {
    std::function<int(int)> blockSize = [](int) { return 1024; };  ///< of the nth block
    /// Outputs use the buffers of inputs: their own, or those so many channels further.
    std::optional<std::size_t> shared{};
    const Channels* sideChain = nullptr;
    std::vector<FormatHost::Change> changes{};  ///< offsets from the start
};

inline Channels play(FormatHost& host, const Channels& input, const Performance& performance = {}) {
    const std::size_t channels = input.size();
    Channels buffers = input;
    if (!performance.shared) {
        for (Signal& signal : buffers) std::ranges::fill(signal, 7.0f);
    }
    const Channels& source = performance.shared ? buffers : input;
    const auto bufferOf = [&](std::size_t c) -> Signal& {
        return buffers[(c + performance.shared.value_or(0)) % channels];
    };
    std::vector<const float*> inputs(channels);
    std::vector<const float*> keys(performance.sideChain ? channels : 0);
    std::vector<float*> outputs(channels);
    std::vector<FormatHost::Change> due;
    auto next = performance.changes.begin();
    const int length = static_cast<int>(input.front().size());
    for (int block = 0, begin = 0; begin < length; ++block) {
        const int samples = std::min(performance.blockSize(block), length - begin);
        for (std::size_t c = 0; c < channels; ++c) {
            inputs[c] = source[c].data() + begin;
            outputs[c] = bufferOf(c).data() + begin;
            if (performance.sideChain) keys[c] = (*performance.sideChain)[c].data() + begin;
        }
        due.clear();
        for (; next != performance.changes.end() && next->offset < begin + samples; ++next) {
            due.push_back({next->offset - begin, next->index, next->value});
        }
        host.process({inputs, keys, outputs, samples, due, {}});
        host.idle();
        begin += samples;
    }
    Channels output;
    for (std::size_t c = 0; c < channels; ++c) output.push_back(std::move(bufferOf(c)));
    return output;
}

inline bool isFinite(const Channels& channels) {
    return std::ranges::all_of(channels, [](const Signal& signal) {
        return std::ranges::all_of(signal, [](float x) { return std::isfinite(x); });
    });
}

inline double differenceDb(const Channels& a, const Channels& b) {
    double worst = -400.0;
    for (std::size_t c = 0; c < a.size(); ++c) worst = std::max(worst, nullDb(a[c], b[c]));
    return worst;
}

}  // namespace vanta::test
