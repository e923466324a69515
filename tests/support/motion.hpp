#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "foundation/numbers.hpp"
#include "tests/support/limiter_rig.hpp"

/// Settings that change while a signal plays, and measures of what that does to the sound.
namespace vanta::test {

/// Something that happens to a limiter just before sample `at`.
struct Change {
    std::size_t at;
    std::function<void(VantaProcessor&)> make;
};

/// Plays `in` in blocks that end at each change, as a host cuts its blocks at automation. `seen(at, count)`
/// is told of each block that has passed.
inline Channels playChanging(
    LimiterRig& rig, const Channels& in, std::vector<Change> changes, int block = 256,
    const Channels& side = {},
    const std::function<void(std::size_t, std::size_t)>& seen = [](std::size_t, std::size_t) {}) {
    Channels out(in.size(), Signal(in.front().size()));
    changes.push_back({in.front().size(), [](VantaProcessor&) {}});
    std::size_t at = 0;
    for (const Change& change : changes) {
        while (at < change.at) {
            const std::size_t count = std::min(static_cast<std::size_t>(block), change.at - at);
            rig.processBlock(in, side, out, at, count);
            seen(at, count);
            at += count;
        }
        change.make(rig.limiter());
    }
    return out;
}

/// A parameter set by a controller at a sample of its own, wherever the host's blocks end.
struct Move {
    std::size_t at;
    int parameter;
    int position;  ///< of the controller, 0 to 127
};

/// Plays `in` in blocks of the host's sizes, with moves inside of them.
inline Channels playMoving(LimiterRig& rig, const Channels& in, std::span<const Move> moves,
                           std::span<const int> blocks, const Channels& side = {}) {
    constexpr int kFirstController = 40;
    const auto controllerOf = [](int parameter) { return kFirstController + parameter; };
    for (const Move& move : moves) {
        rig.limiter().setControllerTarget(controllerOf(move.parameter), move.parameter);
    }
    Channels out(in.size(), Signal(in.front().size()));
    auto next = moves.begin();
    std::size_t at = 0;
    for (std::size_t k = 0; at < in.front().size(); ++k) {
        const auto wanted = static_cast<std::size_t>(blocks[k % blocks.size()]);
        const std::size_t count = std::min(wanted, in.front().size() - at);
        for (; next != moves.end() && next->at < at + count; ++next) {
            rig.limiter().queueMidi(static_cast<int>(next->at - at), 0xB0,
                                    static_cast<std::uint8_t>(controllerOf(next->parameter)),
                                    static_cast<std::uint8_t>(next->position));
        }
        rig.processBlock(in, side, out, at, count);
        at += count;
    }
    return out;
}
inline Channels playMoving(LimiterRig& rig, const Channels& in, std::span<const Move> moves, int block,
                           const Channels& side = {}) {
    return playMoving(rig, in, moves, std::span<const int>(&block, 1), side);
}

/// How many samples of two renders are not the same number.
inline std::size_t differingSamples(const Channels& a, const Channels& b) {
    std::size_t count = 0;
    for (std::size_t c = 0; c < a.size(); ++c) {
        for (std::size_t i = 0; i < a[c].size(); ++i) count += a[c][i] != b[c][i];
    }
    return count;
}

/// The largest difference of neighbours, from sample `from` on.
inline double largestStep(std::span<const float> signal, std::size_t from = 0) {
    double largest = 0.0;
    for (std::size_t i = from + 1; i < signal.size(); ++i) {
        largest = std::max(largest, std::abs(static_cast<double>(signal[i]) - signal[i - 1]));
    }
    return largest;
}

/// Reports a measured figure and leaves it in the test's record.
inline void figure(const std::string& name, double value, const char* unit) {
    report("{:<70} {:>10.4f} {}\n", name, value, unit);
    testing::Test::RecordProperty(name, fmt::format("{:.4f} {}", value, unit));
}

}  // namespace vanta::test
