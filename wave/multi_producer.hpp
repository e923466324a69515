#pragma once

#include <memory>
#include <span>
#include <vector>

#include "wave/producer.hpp"

namespace vanta::wave {

/// A component with several outputs that are computed together: the first output that is pulled in a tick
/// does the work for all.
class MultiProducer : public Component {
public:
    MultiProducer(Environment& owner, int outputCount);
    virtual ~MultiProducer();

    /// The verbs of a Producer, which reach the component through its outputs.
    virtual void prepare() {}
    VANTA_REALTIME virtual void reset() {}

    int outputCount() const { return static_cast<int>(outputs_.size()); }
    Producer& output(int index);

protected:
    /// Fills one block an output. To pass another block through, an override calls `publishOutput`.
    VANTA_REALTIME virtual void produce(std::span<BasicBlock<float>* const> blocks, int samples,
                                        int flags) = 0;
    /// As of a Producer, for all outputs.
    virtual bool settled() const { return false; }
    void publishOutput(int index, const BasicBlock<float>& block, int flags) {
        current_[static_cast<std::size_t>(index)] = {&block, flags};
    }

private:
    class Output;
    struct Published {
        const BasicBlock<float>* block;
        int flags;
    };

    VANTA_REALTIME void runFor(int samples, int flags);

    std::vector<std::unique_ptr<BasicBlock<float>>> ownBlocks_;
    std::vector<BasicBlock<float>*> blocks_;
    std::vector<Published> current_;
    std::vector<std::unique_ptr<Output>> outputs_;
};

}  // namespace vanta::wave
