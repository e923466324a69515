#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/element_rig.hpp"
#include "tests/support/signals.hpp"
#include "wave/float_parameter_source.hpp"

namespace vanta::test {

/// What an element is fed with.
enum class Feed {
    Audio,      ///< -1 to 1
    Share,      ///< 0 to 1
    Level,      ///< dB, -100 to 10
    Reduction,  ///< dB, 0 to 20
};

/// Noise, held values and silence in turn, each for 20 to 1500 samples: what moves, rests and wakes elements.
/// It begins with a stretch in which the output depends on what an element still remembers.
inline Signal feedSignal(Feed feed, std::uint64_t seed, std::size_t count) {
    Random random(seed);
    const auto draw = [&] {
        const double x = random.bipolar();
        return static_cast<float>(feed == Feed::Audio       ? x
                                  : feed == Feed::Share     ? 0.5 + 0.5 * x
                                  : feed == Feed::Reduction ? 10.0 + 10.0 * x
                                                            : -45.0 + 55.0 * x);
    };
    constexpr std::size_t kStart = 40;
    Signal signal(kStart, feed == Feed::Level ? -35.0f : 0.0f);
    while (signal.size() < count) {
        const auto length = static_cast<std::size_t>(random.between(20, 1500));
        const int kind = signal.size() == kStart ? 0 : random.between(0, 3);
        const float held = kind == 3 ? 0.0f : draw();
        for (std::size_t i = 0; i < length; ++i) signal.push_back(kind < 2 ? draw() : held);
    }
    signal.resize(count);
    return signal;
}

/// The element under test with all that it needs, wired to sources that play `feed`.
class Patch {
public:
    static constexpr int kBlock = 256;
    static constexpr std::size_t kSamples = 12000;
    static constexpr float kRate = 44100.0f;

    explicit Patch(Feed inputFeed, ConstantFlag constantFlag = ConstantFlag::Never)
        : feed(inputFeed), flag(constantFlag) {
        environment.setSampleRate(kRate);
    }
    /// What was made last goes first.
    ~Patch() {
        while (!parts_.empty()) parts_.pop_back();
    }

    template <typename T, typename... Arguments>
    T& make(Arguments&&... arguments) {
        auto part = std::make_shared<T>(std::forward<Arguments>(arguments)...);
        parts_.push_back(part);
        return *part;
    }
    /// The element under test, fed by a source.
    template <typename T, typename... Arguments>
    T& filter(Arguments&&... arguments) {
        T& made = make<T>(environment, std::forward<Arguments>(arguments)...);
        made.source = &input();
        ends.push_back(&made);
        return made;
    }
    /// The element under test, wired by hand.
    template <typename T, typename... Arguments>
    T& end(Arguments&&... arguments) {
        T& made = make<T>(std::forward<Arguments>(arguments)...);
        ends.push_back(&made);
        return made;
    }
    /// A further source of the patch's own feed, each with a signal of its own.
    VectorSource& input() {
        return play(inputs_, feedSignal(feed, 1 + inputs_.size() + controls_.size(), kSamples));
    }
    /// Moves a control between two values, with rests.
    void move(wave::FloatParameterBus& bus, float low, float high) {
        Signal course = feedSignal(Feed::Share, 100 + controls_.size(), kSamples);
        for (float& x : course) x = low + (high - low) * x;
        bus.setSource(&play(controls_, std::move(course)));
    }
    static void set(wave::FloatParameterBus& bus, float value) { bus.parameter().setValue(value, 0.0f); }

    /// The outputs of all ends, one after the other. Whatever calls itself constant has to be so.
    Signal run(std::span<const int> blocks) {
        std::vector<Signal> outputs(ends.size());
        for (const int size : blocks) {
            runBlock(environment, ends, size, [&](int samples) {
                for (std::size_t i = 0; i < ends.size(); ++i) {
                    const float* data = ends[i]->current().data();
                    const int count = ownSamples(*ends[i], samples);
                    if (ends[i]->isConstant()) {
                        EXPECT_TRUE(std::all_of(data, data + count, [&](float x) { return x == *data; }))
                            << "a block called constant at sample " << outputs[i].size();
                    }
                    outputs[i].insert(outputs[i].end(), data, data + count);
                }
            });
        }
        for (std::size_t i = 1; i < outputs.size(); ++i) {
            outputs[0].insert(outputs[0].end(), outputs[i].begin(), outputs[i].end());
        }
        return outputs[0];
    }
    /// The whole feed, with `midway` in its middle; `cut(n)` gives the blocks of n samples.
    template <typename Cut>
    Signal runAll(Cut&& cut) {
        constexpr int kHalf = kSamples / 2;
        Signal out = run(cut(kHalf));
        if (midway) midway();
        const Signal rest = run(cut(kHalf));
        out.insert(out.end(), rest.begin(), rest.end());
        return out;
    }
    Signal runAll() {
        return runAll([](int total) { return evenBlocks(total, kBlock); });
    }
    /// A part of the feed without `midway`: something to remember. Whole sixteens, as a capacitor looks some
    /// of its figures up at every sixteenth sample of the stream.
    void dirty() { run(randomBlocks(3008, kBlock, 77)); }
    /// All sources from their beginning.
    void rewind() {
        for (const auto* played : {&inputs_, &controls_}) {
            for (const auto& [source, signal] : *played) source->play(signal);
        }
    }
    /// Plays another signal on all inputs, until they are rewound.
    void playInstead(const Signal& signal) {
        for (const auto& input : inputs_) input.first->play(signal);
    }

    wave::Environment environment{kBlock};
    wave::SubEnvironment oversampled{environment};
    const Feed feed;
    const ConstantFlag flag;
    std::vector<wave::Producer*> ends;
    /// What a user does while it runs.
    std::function<void()> midway;

private:
    using Played = std::vector<std::pair<VectorSource*, Signal>>;

    VectorSource& play(Played& among, Signal signal) {
        VectorSource& source = make<VectorSource>(environment, signal, flag);
        among.emplace_back(&source, std::move(signal));
        return source;
    }

    std::vector<std::shared_ptr<void>> parts_;
    Played inputs_, controls_;
};

}  // namespace vanta::test
