#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <initializer_list>
#include <random>
#include <span>
#include <utility>
#include <vector>

#include "foundation/realtime.hpp"
#include "wave/environment.hpp"
#include "wave/float_parameter_source.hpp"
#include "wave/producer.hpp"

/// Drives elements of the block graph by hand: a signal in, blocks pulled, the signal that came out.
namespace vanta::test {

/// Whether a source says so when all samples of a block are equal.
enum class ConstantFlag { Never, WhereTrue };

/// Plays a vector from now on, then silence. As in a live stream, a block that nobody pulls is missed.
class VectorSource final : public wave::Source {
public:
    VectorSource(wave::Environment& owner, std::vector<float> signal,
                 ConstantFlag constantFlag = ConstantFlag::Never)
        : Source(owner), samples_(std::move(signal)), flag_(constantFlag), start_(owner.position()) {}

    /// Starts over, also with another signal.
    void rewind() { start_ = environment().position(); }
    void play(std::vector<float> signal) {
        samples_ = std::move(signal);
        rewind();
    }
    /// How many blocks have been computed so far: 0 means that nobody has pulled this source.
    int blocksPlayed() const { return blocksPlayed_; }

protected:
    void produce(wave::BasicBlock<float>* block, int samples, int) override {
        ++blocksPlayed_;
        float* out = block->data();
        const auto length = static_cast<std::int64_t>(samples_.size());
        const std::int64_t at = std::min(environment().position() - start_, length);
        const auto count = static_cast<std::size_t>(std::min<std::int64_t>(length - at, samples));
        std::copy_n(samples_.begin() + at, count, out);
        std::fill(out + count, out + samples, 0.0f);
        const bool equal = std::all_of(out, out + samples, [&](float x) { return x == out[0]; });
        setConstant(flag_ == ConstantFlag::WhereTrue && equal);
    }

private:
    std::vector<float> samples_;
    ConstantFlag flag_;
    std::int64_t start_;  ///< the position of the first sample
    int blocksPlayed_ = 0;
};

/// `total` samples in blocks of `block`, the last one shorter.
inline std::vector<int> evenBlocks(int total, int block) {
    std::vector<int> sizes(static_cast<std::size_t>(total / block), block);
    if (total % block) sizes.push_back(total % block);
    return sizes;
}

/// `total` samples in blocks of 1 to `largest`, at random; the same seed gives the same blocks.
inline std::vector<int> randomBlocks(int total, int largest, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<int> sizes;
    while (total > 0) {
        const int size = std::min(std::uniform_int_distribution<int>(1, largest)(random), total);
        sizes.push_back(size);
        total -= size;
    }
    return sizes;
}

/// Seeds of a test that draws at random: the same few in every run, or the one in VANTA_SEED.
inline std::vector<unsigned> testSeeds() {
    if (const char* replayed = std::getenv("VANTA_SEED")) return {static_cast<unsigned>(std::atoi(replayed))};
    return {1, 2, 3};
}

/// Samples of an element's own environment in a block of `samples` of the top environment.
inline int ownSamples(const wave::Producer& element, int samples) {
    const auto* sub = dynamic_cast<const wave::SubEnvironment*>(&element.environment());
    return sub ? samples * sub->factor() : samples;
}

/// Runs one block of the graph below `environment` (the top one), pulls the elements in order, and calls
/// `afterPull(samples)` while their blocks stand. To change a parameter between blocks, call it in a loop.
template <typename AfterPull>
void runBlock(wave::Environment& environment, std::span<wave::Producer* const> elements, int samples,
              AfterPull&& afterPull) {
    {
        const RealtimeScope audio;
        environment.advanceTick();
        for (wave::Producer* element : elements) element->pull(ownSamples(*element, samples));
    }
    afterPull(samples);
    const RealtimeScope audio;
    environment.run(samples, 0);
}

/// Runs a graph that nobody pulls: meters and what else is scheduled.
inline void runGraph(wave::Environment& environment, std::span<const int> blockSizes) {
    for (const int size : blockSizes) runBlock(environment, {}, size, [](int) {});
}

/// The outputs of several elements that run side by side, one vector each.
inline std::vector<std::vector<float>> runElements(wave::Environment& environment,
                                                   std::span<wave::Producer* const> elements,
                                                   std::span<const int> blockSizes) {
    std::vector<std::vector<float>> outputs(elements.size());
    for (const int size : blockSizes) {
        runBlock(environment, elements, size, [&](int samples) {
            for (std::size_t i = 0; i < elements.size(); ++i) {
                const float* data = elements[i]->current().data();
                outputs[i].insert(outputs[i].end(), data, data + ownSamples(*elements[i], samples));
            }
        });
    }
    return outputs;
}

/// The output of one element over blocks of the given sizes, as `runElement(environment, element, {64, 3})`
/// or with `evenBlocks`, `randomBlocks`.
inline std::vector<float> runElement(wave::Environment& environment, wave::Producer& element,
                                     std::span<const int> blockSizes) {
    wave::Producer* const elements[] = {&element};
    return std::move(runElements(environment, elements, blockSizes).front());
}
inline std::vector<float> runElement(wave::Environment& environment, wave::Producer& element,
                                     std::initializer_list<int> blockSizes) {
    return runElement(environment, element, std::span<const int>(blockSizes.begin(), blockSizes.size()));
}

/// One element fed by a source, at 48 kHz. Its controls are constant, or play one value a sample.
template <typename Element>
struct ElementRig {
    /// `arguments` are those of the element's constructor after its environment.
    template <typename... Arguments>
    explicit ElementRig(std::vector<float> signal, Arguments&&... arguments)
        : source(environment, std::move(signal)),
          element(environment, std::forward<Arguments>(arguments)...) {
        environment.setSampleRate(48000.0f);
        element.source = &source;
    }
    static void set(wave::FloatParameterBus& control, double value) {
        control.parameter().setValue(static_cast<float>(value), 0.0f);
    }
    VectorSource& play(wave::FloatParameterBus& control, std::vector<float> course,
                       ConstantFlag flag = ConstantFlag::WhereTrue) {
        control.setSource(&controls.emplace_back(environment, std::move(course), flag));
        return controls.back();
    }
    std::vector<float> run(std::span<const int> blocks) { return runElement(environment, element, blocks); }
    std::vector<float> run(int count, int block = 256) { return run(evenBlocks(count, block)); }

    wave::Environment environment{512};
    VectorSource source;
    std::deque<VectorSource> controls;
    Element element;
};

}  // namespace vanta::test
