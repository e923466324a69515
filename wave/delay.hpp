#pragma once

#include <cstdint>

#include "wave/producer.hpp"

namespace vanta::wave {

/// A ring of past samples. Reads of samples that were never written since the last `clear` give `fillValue`.
class Delay final : public DynamicMaxBlockSizeListener, public Component {
public:
    explicit Delay(Environment& owner, int maxDelay = 0, float fill = 0.0f);
    ~Delay() override;

    VANTA_REALTIME void write(const float* samples, int count);
    /// The `count` samples that end `delay` samples before the last one written; `delay` at most `maxDelay`
    /// for a count of one block.
    VANTA_REALTIME void read(int delay, float* out, int count) const;
    /// The same of the block `in` that comes next and has not been written.
    VANTA_REALTIME void readThrough(int delay, const float* in, float* out, int count) const;
    /// Writes no more of it than later reads of that kind can reach.
    VANTA_REALTIME void keep(const float* samples, int count);
    /// Counts the ring as empty.
    VANTA_REALTIME void clear() { written_ = writePosition_ = 0; }

    /// Sizes the ring and clears it if the length differs. Allocates.
    void setMaxDelay(int samples);
    /// What reads of samples give that were never written.
    VANTA_REALTIME void setFill(float value) { fillValue_ = value; }
    /// The length that the owner reads at, limited to the largest.
    void setDelay(int samples) { delay_ = samples < maxDelay_ ? samples : maxDelay_; }
    void maxBlockSizeChanged() override { resizeRing(); }

    int delay() const { return delay_; }
    int maxDelay() const { return maxDelay_; }
    /// For reads at fractional places: the ring, its mask, and how far it is filled.
    const float* ring() const { return ring_.data(); }
    int mask() const { return mask_; }
    int written() const { return written_; }
    int writePosition() const { return writePosition_; }
    int ringSize() const { return mask_ + 1; }

private:
    void resizeRing();
    VANTA_REALTIME void advance(int count);

    AlignedBuffer<float> ring_;
    float fillValue_;
    int delay_ = 0;
    int maxDelay_;
    int mask_ = 0;
    int written_ = 0;
    int writePosition_ = 0;
};

/// A filter that remembers its input in a ring, where it has been written before `process`. A block that was
/// missed, or a reset, empties the ring.
class DelayFilterBase : public FilterBase {
public:
    explicit DelayFilterBase(Environment& owner, float fill = 0.0f)
        : FilterBase(owner), delay_(owner, 0, fill) {}

    Delay& delayLine() { return delay_; }
    const Delay& delayLine() const { return delay_; }

protected:
    VANTA_REALTIME void produce(BasicBlock<float>* block, int samples, int flags) override;
    /// Writes the block into the ring; who does that in `process` need not here.
    VANTA_REALTIME virtual void store(const BasicBlock<float>& in, int samples) {
        delay_.write(in.data(), samples);
    }
    /// Called when a block was missed or a reset came, before the new block is written.
    VANTA_REALTIME virtual void streamInterrupted() {}
    /// Whether nothing but the newest sample stands in the ring, so that it does not matter where its end is.
    bool holdsOneValue() const { return constantRun_ >= delay_.ringSize(); }
    /// The same of what a read of the block at this delay takes in.
    bool holdsOneValue(int delay, int samples) const { return constantRun_ >= samples + delay; }
    /// From the first block of a stream on: what came before was the same as its first sample.
    VANTA_REALTIME void extendIntoPast(float value);

private:
    VANTA_REALTIME void followConstant(const BasicBlock<float>& in, int samples);

    Delay delay_;
    std::int64_t expectedPosition_ = 0;
    std::int64_t constantRun_ = 0;  ///< how many of the newest samples hold `constantValue_`
    float constantValue_ = 0.0f;
};

/// A delay of whole samples that its owner sets.
class DelayFilter final : public DelayFilterBase {
public:
    /// What counts as having come before the stream.
    enum class Past {
        Fill,       ///< the fill value
        FirstValue  ///< the first sample, for control values, which do not begin with the stream
    };

    explicit DelayFilter(Environment& owner, float fill = 0.0f) : DelayFilterBase(owner, fill) {}
    DelayFilter(Environment& owner, Past past) : DelayFilterBase(owner), past_(past) {}

    /// Allocates if the largest length changes.
    void setMaxDelay(int samples) {
        delayLine().setMaxDelay(samples);
        environment().noteChange();
    }
    void setDelay(int samples) {
        delayLine().setDelay(samples);
        environment().noteChange();
    }

protected:
    /// Once nothing else stands in the ring, wherever its end is.
    bool settled() const override { return holdsOneValue(); }
    void process(const BasicBlock<float>& in, BasicBlock<float>* out, int samples, int flags) override;
    void store(const BasicBlock<float>&, int) override {}
    void streamInterrupted() override;

private:
    Past past_ = Past::Fill;
    bool begins_ = true;
};

}  // namespace vanta::wave
