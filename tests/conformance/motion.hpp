#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "limiter/parameters/parameter_table.hpp"
#include "tests/support/limiter_rig.hpp"

/// Settings that change while a signal plays, and measures of what that does to the sound.
namespace vanta::test {

/// A parameter of the table by its name, in its own numbers.
struct Value {
    std::string_view name;
    float value;
};

inline int indexOf(std::string_view name) {
    const auto row = std::ranges::find(kParameterTable, name, &ParameterRow::name);
    if (row == kParameterTable.end()) throw std::invalid_argument("no such parameter");
    return static_cast<int>(row - kParameterTable.begin());
}

inline void set(VantaProcessor& limiter, const Value& value) {
    limiter.parameterAt(indexOf(value.name))->setValue(value.value, 0);
}

/// A setup's further settings; the side chain is heard if the host delivers one.
inline std::function<void(VantaProcessor&)> with(std::vector<Value> values) {
    return [values = std::move(values)](VantaProcessor& limiter) {
        limiter.setSideChainInUse(true);
        for (const Value& value : values) set(limiter, value);
    };
}

struct Change {
    std::size_t at;
    Value value;
};

/// Plays `in` in blocks that end at each change, as a host cuts its blocks at automation. `seen(count)` is
/// called after each block.
inline Channels playChanging(
    LimiterRig& rig, const Channels& in, const std::vector<Change>& changes, const Channels& side = {},
    const std::function<void(std::size_t)>& seen = [](std::size_t) {}) {
    Channels out(in.size(), Signal(in.front().size()));
    auto next = changes.begin();
    for (std::size_t at = 0, count = 0; at < in.front().size(); at += count) {
        for (; next != changes.end() && next->at == at; ++next) set(rig.limiter(), next->value);
        const std::size_t end = next == changes.end() ? in.front().size() : next->at;
        count = std::min<std::size_t>(GenericPluginProcessor::kMaxSubBlock, end - at);
        rig.processBlock(in, side, out, at, count);
        seen(count);
    }
    return out;
}

/// A parameter set by a controller at a sample of its own, wherever the host's blocks end.
struct Move {
    std::size_t at;
    int parameter;
    int position;  ///< of the controller, 0 to 127
};

/// Plays `in` in blocks of these sizes in turn, with moves inside of them.
inline Channels playMoving(const LimiterSetup& setup, const Channels& in, std::span<const Move> moves,
                           std::span<const int> blocks, const Channels& side = {}) {
    constexpr int kFirstController = 40;
    LimiterRig rig(setup);
    Channels out(in.size(), Signal(in.front().size()));
    auto next = moves.begin();
    for (std::size_t at = 0, count = 0, k = 0; at < in.front().size(); at += count, ++k) {
        count = std::min(static_cast<std::size_t>(blocks[k % blocks.size()]), in.front().size() - at);
        for (; next != moves.end() && next->at < at + count; ++next) {
            const int controller = kFirstController + next->parameter;
            rig.limiter().setControllerTarget(controller, next->parameter);
            rig.limiter().queueMidi(static_cast<int>(next->at - at), 0xB0,
                                    static_cast<std::uint8_t>(controller),
                                    static_cast<std::uint8_t>(next->position));
        }
        rig.processBlock(in, side, out, at, count);
    }
    return out;
}

/// The largest difference of neighbours, from sample `from` on.
inline double largestStep(std::span<const float> signal, std::size_t from = 0) {
    double largest = 0.0;
    for (std::size_t i = from + 1; i < signal.size(); ++i) {
        largest = std::max(largest, std::abs(static_cast<double>(signal[i]) - signal[i - 1]));
    }
    return largest;
}

/// Reports a measured figure, and leaves it in the test's record.
inline void figure(const std::string& name, double value, const char* unit) {
    report("{:<68} {:>10.4f} {}\n", name, value, unit);
    testing::Test::RecordProperty(name, fmt::format("{:.4f} {}", value, unit));
}

}  // namespace vanta::test
