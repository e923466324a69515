#include "dsp/convolver/smoothing_kernel.hpp"

#include <algorithm>
#include <cmath>

#include "foundation/numbers.hpp"
#include "kernel/mix.hpp"

namespace vanta {

/// Computes the taps and their sum. It keeps the shape of the pass's start: the inputs may move on before it
/// ends.
class SmoothingKernel::ShapeTask final : public UpdateTask {
public:
    explicit ShapeTask(SmoothingKernel& owner) : UpdateTask(owner), kernel_(owner) { grainCost = kTapCost; }

    void prepare() override {
        shape_ = kernel_.wanted_;
        sum_ = 0.0;
        version().length = shape_.length;
        grainCount = kernel_.paddedLength(shape_.length);
    }

    void run(int firstGrain, int count) override {
        float* taps = version().taps.data();
        const int end = firstGrain + count;
        const int shaped = std::min(end, shape_.length);
        for (int i = firstGrain; i < shaped; ++i) {
            taps[i] = shape_.tap(i);
            sum_ += taps[i];
        }
        std::fill(taps + std::max(firstGrain, shaped), taps + end, 0.0f);
    }

    double sum() const { return sum_; }

private:
    /// A tap with its power takes about as long as this many grains of a transform.
    static constexpr int kTapCost = 100;

    SmoothingKernel& kernel_;
    SmoothingShape shape_;
    double sum_ = 0.0;
};

/// Scales the taps to a sum of 1.
class SmoothingKernel::NormalizeTask final : public UpdateTask {
public:
    NormalizeTask(SmoothingKernel& owner, const ShapeTask& taps) : UpdateTask(owner), taps_(taps) {}

    void prepare() override { grainCount = version().length; }

    void run(int firstGrain, int count) override {
        float* taps = version().taps.data() + firstGrain;
        if (std::abs(taps_.sum()) <= kEqualWithin) {
            std::fill_n(taps, count, static_cast<float>(1.0 / version().length));
        } else {
            kernel::scale(taps, static_cast<float>(1.0 / taps_.sum()), taps, static_cast<std::size_t>(count));
        }
    }

private:
    const ShapeTask& taps_;
};

SmoothingKernel::SmoothingKernel(wave::Environment& owner, ConvolverPlan& plan)
    : ConvolverKernel(owner, plan),
      windowSize(owner, 0.0f, 0.0f, 50.0f),
      offset(owner, 0.5f, 0.0f, 1.0f),
      power(owner, 0.0f, 0.0f, 1.0f),
      smoothing(owner, 0.0f, 0.0f, 1.0f) {
    auto taps = std::make_unique<ShapeTask>(*this);
    auto normalize = std::make_unique<NormalizeTask>(*this, *taps);
    addUpdateTask(std::move(taps));
    addUpdateTask(std::move(normalize));
    addTransforms();
}

void SmoothingKernel::propertyChanged(AbstractProperty&) {
    wanted_.form = std::clamp<int>(shape, Triangle, Classic);
    setDirty();
}

int SmoothingKernel::lengthFor(float windowMs) const {
    // Limited before the conversion to whole samples, which a source on the bus could carry out of range.
    const double longestMs = 1000.0 * plan().maxLength() / environment().sampleRate();
    const double ms = windowMs > 0.0f ? std::min<double>(windowMs, longestMs + 1.0) : 0.0;
    return std::min(1 + samplesInMs(ms, environment().sampleRate()), plan().maxLength());
}

void SmoothingKernel::update(int samples) {
    // Also where nothing is looked at: a source that is not pulled would take that for a gap.
    for (auto* bus : {&windowSize, &offset, &power, &smoothing}) bus->pullData(samples);
    const std::int64_t size = plan().partitionSize();
    int count = 0;
    for (int done = 0; done < samples; done += count) {
        const auto phase = static_cast<int>(time() % size);
        if (phase == 0) lookAt(done, samples);
        count = std::min(samples - done, static_cast<int>(size) - phase);
        advance(count);
    }
}

// Asks for a new version if the inputs have moved at that sample of the block.
void SmoothingKernel::lookAt(int sample, int samples) {
    const auto unit = [&](wave::FloatParameterBus& bus) {
        const float value = bus.pullData(samples)[sample];
        return value > 0.0f ? std::min(value, 1.0f) : 0.0f;  // no NaN passes
    };
    SmoothingShape shapeNow = wanted_;
    shapeNow.length = lengthFor(windowSize.pullData(samples)[sample]);
    shapeNow.offset = unit(offset);
    shapeNow.power = unit(power);
    shapeNow.smoothing = unit(smoothing);
    const bool same = shapeNow.length == wanted_.length && nearlyEqual(shapeNow.offset, wanted_.offset) &&
                      nearlyEqual(shapeNow.power, wanted_.power) &&
                      nearlyEqual(shapeNow.smoothing, wanted_.smoothing);
    if (same) return;
    wanted_ = shapeNow;
    setDirty();
}

}  // namespace vanta
