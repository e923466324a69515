#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <random>
#include <span>
#include <utility>
#include <vector>

#include "foundation/realtime.hpp"
#include "wave/environment.hpp"
#include "wave/producer.hpp"

/// Drives elements of the block graph by hand: a signal in, blocks pulled, the signal that came out.
namespace vanta::test {

/// Whether a source says so when all samples of a block are equal.
enum class ConstantFlag { Never, WhereTrue };

/// Plays a vector, then silence.
class VectorSource final : public wave::Source {
public:
    VectorSource(wave::Environment& owner, std::vector<float> signal,
                 ConstantFlag constantFlag = ConstantFlag::Never)
        : Source(owner), samples_(std::move(signal)), flag_(constantFlag) {}

    /// Starts over, also with another signal.
    void rewind() { position_ = 0; }
    void play(std::vector<float> signal) {
        samples_ = std::move(signal);
        position_ = 0;
    }
    /// How many blocks have been computed so far: 0 tells that nobody has pulled this source.
    int blocksPlayed() const { return blocksPlayed_; }

protected:
    void produce(wave::BasicBlock<float>* block, int samples, int) override {
        ++blocksPlayed_;
        float* out = block->data();
        const std::size_t left = samples_.size() - std::min(position_, samples_.size());
        const auto count = std::min(left, static_cast<std::size_t>(samples));
        std::copy_n(samples_.begin() + static_cast<std::ptrdiff_t>(position_), count, out);
        std::fill(out + count, out + samples, 0.0f);
        position_ += count;
        const bool equal = std::all_of(out, out + samples, [&](float x) { return x == out[0]; });
        setConstant(flag_ == ConstantFlag::WhereTrue && equal);
    }

private:
    std::vector<float> samples_;
    ConstantFlag flag_;
    std::size_t position_ = 0;
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

}  // namespace vanta::test
