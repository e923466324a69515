#include "wave/multi_producer.hpp"

namespace vanta::wave {

class MultiProducer::Output final : public Producer {
public:
    Output(Environment& environment, MultiProducer& owner)
        : Producer(environment, OwnBlock::No), owner_(owner) {}
    void prepare() override { owner_.prepare(); }
    void reset() override { owner_.reset(); }

protected:
    bool settled() const override { return owner_.settled(); }
    void produce(BasicBlock<float>*, int samples, int flags) override { owner_.runFor(samples, flags); }

private:
    friend class MultiProducer;
    MultiProducer& owner_;
};

MultiProducer::MultiProducer(Environment& owner, int outputCount) : Component(owner) {
    for (int i = 0; i < outputCount; ++i) {
        ownBlocks_.push_back(std::make_unique<BasicBlock<float>>(owner));
        blocks_.push_back(ownBlocks_.back().get());
        current_.push_back({blocks_.back(), 0});
        outputs_.push_back(std::make_unique<Output>(owner, *this));
    }
}

MultiProducer::~MultiProducer() = default;

Producer& MultiProducer::output(int index) {
    return *outputs_[static_cast<std::size_t>(index)];
}

void MultiProducer::runFor(int samples, int flags) {
    for (std::size_t i = 0; i < blocks_.size(); ++i) current_[i] = {blocks_[i], 0};
    Environment::Reads reads = environment().readsOf([&] { produce(blocks_, samples, flags); });
    reads.rest = reads.rest && settled();
    environment().noteRead(reads.rest, reads.gates);
    for (std::size_t i = 0; i < outputs_.size(); ++i) {
        outputs_[i]->publish(*current_[i].block, current_[i].flags);
        outputs_[i]->markProduced(samples, reads);
    }
}

}  // namespace vanta::wave
