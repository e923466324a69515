#pragma once

#include <algorithm>

#include "wave/aligned_buffer.hpp"
#include "wave/environment.hpp"

namespace vanta::wave {

/// A block of samples that always holds one full block of its environment.
template <typename T>
class BasicBlock : public DynamicMaxBlockSizeListener, public AlignedBuffer<T> {
public:
    explicit BasicBlock(Environment& owner) : BasicBlock(owner, owner.maxBlockSize()) {}
    /// A first size of its own, for an environment that is not complete yet.
    BasicBlock(Environment& owner, int samples) : AlignedBuffer<T>(samples), environment_(owner) {
        environment_.addBlockListener(this);
    }
    ~BasicBlock() override { environment_.removeBlockListener(this); }

    void maxBlockSizeChanged() override { this->resize(environment_.maxBlockSize()); }

protected:
    Environment& environment() const { return environment_; }

private:
    Environment& environment_;
};

/// A block that holds one value throughout.
class ConstValueBlock final : public BasicBlock<float> {
public:
    ConstValueBlock(Environment& owner, float value) : BasicBlock<float>(owner), value_(value) { fill(); }
    void maxBlockSizeChanged() override {
        BasicBlock<float>::maxBlockSizeChanged();
        fill();
    }

private:
    void fill() { std::fill(data(), data() + size(), value_); }
    float value_;
};

}  // namespace vanta::wave
