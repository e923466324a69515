#pragma once

#include <utility>
#include <vector>

#include "wave/producer.hpp"

namespace vanta {

/// A weighted sum that does as little as possible: one input at unity passes without a copy, and while all
/// inputs are constant one sample is computed.
class StaticMixer final : public wave::Source {
public:
    struct Input {
        float gain = 1.0f;
        wave::Producer* input = nullptr;  ///< owned elsewhere; null takes no part
    };

    StaticMixer(wave::Environment& owner, std::vector<Input> inputs = {})
        : Source(owner), inputs_(std::move(inputs)) {}

    /// While the graph is built, before the first block.
    void addInput(float gain, wave::Producer* input) { inputs_.push_back({gain, input}); }

protected:
    bool settled() const override { return true; }
    void produce(wave::BasicBlock<float>* block, int samples, int flags) override;

private:
    std::vector<Input> inputs_;
};

}  // namespace vanta
